#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "memory/Slab.h"

// The lists' way to memory in the model: every access is one step of the thread that runs.
//
// A thread's operation is run again from its beginning for each step. The steps it has taken before
// are answered from the record, without touching memory; then one access is done; before the one
// after it, the operation is left by an exception. So the state of a thread inside an operation is
// its record, and nothing else has to be kept of it. Since the stepping is sequential, what is
// explored is every sequentially consistent execution.
class CModelStepper {
public:
  struct Paused {};                            // the step is done, and the operation is not
  struct Restarted {};                         // the operation stands at its beginning again
  using Record = std::vector<std::uintptr_t>;  // what each access has answered

  void Begin(Record& record) {
    fRecord = &record;
    fAt = 0;
    fHasStepped = false;
  }

  template <class Perform>
  std::uintptr_t Step(const Perform& perform) {
    if (fAt < fRecord->size()) return (*fRecord)[fAt++];
    if (fHasStepped) throw Paused();
    fHasStepped = true;
    fRecord->push_back(perform());
    return (*fRecord)[fAt++];
  }

  // For what no other thread can see, and so needs no step of its own: done once, with the access
  // before it.
  bool IsNew() const { return fHasStepped; }

private:
  Record* fRecord = nullptr;
  std::size_t fAt = 0;
  bool fHasStepped = false;
};

// Two deliberate defects show that the model finds what it looks for.
enum class Defect { None, IgnoresChanges, LocksAreFree };

template <Defect kDefect>
struct ModelAccess {
  static inline CModelStepper stepper;
  static inline Memory::Slab* (*makeSlab)(std::uint32_t classValue) = nullptr;

  template <class T>
  static T Load(const std::atomic<T>& from, std::memory_order) {
    return FromWord<T>(stepper.Step([&] { return ToWord(from.load()); }));
  }
  template <class T>
  static void Store(std::atomic<T>& to, T value, std::memory_order) {
    stepper.Step([&] {
      to.store(value);
      return 0;
    });
  }
  // Commutes with everything, since nothing but the end reads it.
  static void Add(std::atomic<std::uint32_t>& count, int difference) {
    if (stepper.IsNew()) count.fetch_add(static_cast<std::uint32_t>(difference));
  }
  static bool SwapFreeList(Memory::FreeList& list, Memory::FreeListState expected,
                           Memory::FreeListState desired) {
    return stepper.Step([&] {
      const bool isAsExpected =
          list.first.load() == expected.first &&
          (kDefect == Defect::IgnoresChanges || list.changes.load() == expected.changes);
      if (isAsExpected) {
        list.first.store(desired.first);
        list.changes.store(desired.changes);
      }
      return isAsExpected;
    }) != 0;
  }
  static bool TryLock(std::atomic<std::uint32_t>& lock) {
    return stepper.Step([&] { return kDefect == Defect::LocksAreFree || lock.exchange(1) == 0; }) !=
           0;
  }
  static void Unlock(std::atomic<std::uint32_t>& lock) { Store(lock, 0u, {}); }
  static void Yield() { throw CModelStepper::Restarted(); }

  static Memory::Slab* MakeSlab(std::uint32_t classValue) {
    return reinterpret_cast<Memory::Slab*>(
        stepper.Step([&] { return reinterpret_cast<std::uintptr_t>(makeSlab(classValue)); }));
  }

private:
  template <class T>
  static std::uintptr_t ToWord(T value) {
    if constexpr (std::is_pointer_v<T>)
      return reinterpret_cast<std::uintptr_t>(value);
    else
      return value;
  }
  template <class T>
  static T FromWord(std::uintptr_t word) {
    if constexpr (std::is_pointer_v<T>)
      return reinterpret_cast<T>(word);
    else
      return static_cast<T>(word);
  }
};
