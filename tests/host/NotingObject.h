#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/IObject.h"

// An object of the tests' own making, to be laid under any interface: each operation in its table
// notes that it was called, and with what. Files that call through it are compiled without the
// sanitizer that would find out.

// One call of an operation, as the machine passes it.
struct NotedCall {
  std::size_t slot;
  const void* object;
  // What whole numbers, truth values and pointers were passed, in their order. Of a narrow one only
  // its own bytes mean anything, and what the caller did not pass means nothing.
  std::array<std::uintptr_t, 7> words;
  double number;  // the one floating-point argument, if there is one
};

inline std::vector<NotedCall> gCalls;
inline std::uintptr_t gAnswer = 0;  // of every operation: null, false or "" for most

inline std::vector<std::size_t> SlotsCalled() {
  std::vector<std::size_t> slots;
  std::ranges::transform(gCalls, std::back_inserter(slots), &NotedCall::slot);
  return slots;
}

template <std::size_t Slot>
std::uintptr_t NoteSlot(const void* object, std::uintptr_t first, std::uintptr_t second,
                        std::uintptr_t third, std::uintptr_t fourth, std::uintptr_t fifth,
                        std::uintptr_t sixth, std::uintptr_t seventh, double number) {
  gCalls.push_back({Slot, object, {first, second, third, fourth, fifth, sixth, seventh}, number});
  return gAnswer;
}

using NotingSlot = decltype(&NoteSlot<0>);

inline constexpr std::size_t kTableSize = 128;

template <std::size_t... Slots>
constexpr std::array<NotingSlot, sizeof...(Slots)> MakeTable(std::index_sequence<Slots...>) {
  return {&NoteSlot<Slots>...};
}

inline constinit const std::array<NotingSlot, kTableSize> kTable =
    MakeTable(std::make_index_sequence<kTableSize>());

// As the binary interface lays an object out: a pointer to the table, and nothing else of interest.
struct NotingObject {
  const NotingSlot* table = kTable.data();

  template <class Interface>
  Interface* As() {
    void* const object = this;
    return static_cast<Interface*>(object);
  }
};
inline NotingObject gObject;

template <class Interface>
Interface* Noting() {
  return gObject.As<Interface>();
}

template <class T>
concept IsInterface = requires {
  sizeof(T);
}
&&std::is_base_of_v<Tovrin::IObject, T>;
