#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "memory/Slab.h"
#include "memory/SlabLists.h"
#include "tests/memory/ModelAccess.h"

// Runs a few threads, each with a short program of takes and gives, over one list of slabs of two
// blocks each, in every order of their accesses to shared memory.
//
// A state that was seen before is not gone into again, whichever way led there. In every state no
// block is held twice; at every end, lists and counts are whole. What goes wrong comes back as a
// text with the order of threads that leads there.
template <Defect kDefect>
class CInterleavings {
public:
  enum class Kind { Take, Give };
  struct Operation {
    Kind kind;
    std::size_t which = 0;  // Give: the thread's block of that number, in the order it took them
  };
  using Program = std::vector<Operation>;

  struct Result {
    std::size_t states = 0;
    std::size_t ends = 0;
    std::set<std::uint32_t> slabsMade;  // at the ends
    std::string fault;                  // empty: none in any order
  };

  // The program before is run first, on its own; what it has not given back remains in use.
  static Result Explore(const Program& before, const std::vector<Program>& programs,
                        std::uint32_t slabLimit = kMaxSlabs) {
    CInterleavings exploration(programs, slabLimit);
    const State start = exploration.Prepare(before);
    exploration.ExploreFrom(start);
    return exploration.fResult;
  }

private:
  using Access = ModelAccess<kDefect>;

  static constexpr std::uint32_t kMaxSlabs = 3;
  static constexpr std::size_t kBlocksASlab = 2;
  static constexpr std::uint32_t kClass = 8;

  struct Memory {
    ::Memory::SlabList list;
    std::uint32_t slabsMade = 0;
    std::uint32_t slabLimit = kMaxSlabs;
    struct alignas(16) SlabPlace {
      std::array<std::byte, ::Memory::kSlabHeader + kBlocksASlab*(kClass + 8)> bytes{};
    };
    std::array<SlabPlace, kMaxSlabs> slabs;
  };
  // The one memory of the model: blocks are known by their addresses in it.
  static inline Memory memory;
  using Bytes = std::array<std::byte, sizeof(Memory)>;

  struct Thread {
    std::size_t operation = 0;  // of its program; the end when it is through
    CModelStepper::Record record;
    std::vector<::Memory::Block*> taken;  // null: given back, or there was none
  };
  struct State {
    Bytes bytes;
    std::vector<Thread> threads;
    std::string order;
  };

  CInterleavings(const std::vector<Program>& programs, std::uint32_t slabLimit)
      : fPrograms(programs), fSlabLimit(slabLimit) {}

  static ::Memory::Slab* MakeSlab(std::uint32_t classValue) {
    if (memory.slabsMade == memory.slabLimit) return nullptr;
    auto* const slab =
        reinterpret_cast<::Memory::Slab*>(memory.slabs[memory.slabsMade++].bytes.data());
    ::Memory::FormatSlab(*slab, classValue, kBlocksASlab);
    slab->created = {};  // the time would make equal states differ
    return slab;
  }

  State Prepare(const Program& before) {
    // All bytes, since states are compared by them.
    std::memset(static_cast<void*>(&memory), 0, sizeof memory);
    memory.slabLimit = fSlabLimit;
    Access::makeSlab = &MakeSlab;
    State state{{}, std::vector<Thread>(fPrograms.size()), ""};
    Thread nobody;
    while (nobody.operation < before.size()) RunOneStep(nobody, before[nobody.operation]);
    std::erase(nobody.taken, nullptr);
    fHeldByNobody = nobody.taken;
    Save(state);
    return state;
  }

  static void Save(State& state) {
    std::memcpy(state.bytes.data(), static_cast<const void*>(&memory), sizeof memory);
  }
  static void Restore(const State& state) {
    std::memcpy(static_cast<void*>(&memory), state.bytes.data(), sizeof memory);
  }

  static void RunOneStep(Thread& thread, const Operation& operation) {
    Access::stepper.Begin(thread.record);
    try {
      if (operation.kind == Kind::Take) {
        const auto nowhere = [](::Memory::Slab*) -> ::Memory::Block* { return nullptr; };
        ::Memory::Block* block = ::Memory::TakeFromFirstSlab<Access>(memory.list);
        if (!block) block = ::Memory::TakeFromList<Access>(memory.list, kClass, nowhere);
        thread.taken.push_back(block);
      } else if (::Memory::Block* const block = thread.taken[operation.which]) {
        // As FreeBlock does it; the model's blocks know their slab by their place.
        ::Memory::GiveToSlab<Access>(*SlabOf(block), *block);
        thread.taken[operation.which] = nullptr;
      }
    } catch (const CModelStepper::Paused&) {
      return;
    } catch (const CModelStepper::Restarted&) {
      thread.record.clear();
      return;
    }
    thread.record.clear();
    ++thread.operation;
  }

  static ::Memory::Slab* SlabOf(const ::Memory::Block* block) {
    const auto place = reinterpret_cast<std::uintptr_t>(block);
    const auto begin = reinterpret_cast<std::uintptr_t>(memory.slabs.data());
    return reinterpret_cast<::Memory::Slab*>(
        &memory.slabs[(place - begin) / sizeof(memory.slabs[0])]);
  }

  void ExploreFrom(const State& start) {
    std::vector<State> open{start};
    while (!open.empty() && fResult.fault.empty()) {
      const State state = std::move(open.back());
      open.pop_back();
      ++fResult.states;
      bool isEnd = true;
      for (std::size_t thread = 0; thread < fPrograms.size(); ++thread) {
        if (state.threads[thread].operation == fPrograms[thread].size()) continue;
        isEnd = false;
        State next = state;
        Restore(next);
        RunOneStep(next.threads[thread], fPrograms[thread][next.threads[thread].operation]);
        Save(next);
        next.order += static_cast<char>('0' + thread);
        CheckHolders(next);
        if (IsNew(next)) open.push_back(std::move(next));
      }
      if (isEnd) CheckEnd(state);
    }
  }

  // States are known by 128 bits of hash: that two of some millions share them will not happen.
  bool IsNew(const State& state) {
    std::string key(reinterpret_cast<const char*>(state.bytes.data()), state.bytes.size());
    const auto append = [&](const auto& value) {
      key.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    for (const Thread& thread : state.threads) {
      append(thread.operation);
      append(thread.record.size());
      for (const auto& answer : thread.record) append(answer);
      for (const auto& block : thread.taken) append(block);
    }
    const std::size_t first = std::hash<std::string>()(key);
    key += "second";
    return fSeen.insert({first, std::hash<std::string>()(key)}).second;
  }
  struct HashOfSeen {
    std::size_t operator()(const std::pair<std::size_t, std::size_t>& seen) const {
      return seen.first;
    }
  };

  std::vector<::Memory::Block*> HeldBlocks(const State& state) const {
    std::vector<::Memory::Block*> held = fHeldByNobody;
    for (const Thread& thread : state.threads) {
      for (::Memory::Block* block : thread.taken) {
        if (block) held.push_back(block);
      }
    }
    return held;
  }

  void CheckHolders(const State& state) {
    std::set<const ::Memory::Block*> holders;
    for (const ::Memory::Block* block : HeldBlocks(state)) {
      Require(holders.insert(block).second, "a block is held twice", state);
    }
  }

  void CheckEnd(const State& state) {
    Restore(state);
    ++fResult.ends;
    fResult.slabsMade.insert(memory.slabsMade);
    Require(memory.list.lock.load() == 0, "the lock is held at the end", state);

    std::set<const ::Memory::Slab*> listed;
    for (auto* slab = memory.list.head.load(); slab; slab = slab->next.load()) {
      if (!listed.insert(slab).second) return Require(false, "the list goes in a circle", state);
      CheckSlab(*slab, state);
    }
    Require(listed.size() == memory.slabsMade, "a slab is lost", state);
  }

  void CheckSlab(::Memory::Slab& slab, const State& state) {
    std::set<const ::Memory::Block*> there;
    std::uint32_t heldCount = 0;
    for (const ::Memory::Block* block : HeldBlocks(state)) {
      if (SlabOf(block) != &slab) continue;
      Require(block->header.load() == reinterpret_cast<std::uintptr_t>(&slab),
              "a block in use does not know its slab", state);
      there.insert(block);
      ++heldCount;
    }
    Require(slab.inUse.load() == heldCount, "the count of blocks in use is off", state);
    for (auto* block = ::Memory::FirstFreeOf(slab.free.first.load()); block;
         block = ::Memory::FirstFreeOf(block->header.load())) {
      if (!there.insert(block).second) return Require(false, "a free block is in use", state);
      Require(block->header.load() & ::Memory::kFreeBit, "a free block is not marked", state);
    }
    Require(there.size() == kBlocksASlab, "a block is lost", state);
  }

  void Require(bool isTrue, const char* what, const State& state) {
    if (!isTrue && fResult.fault.empty()) fResult.fault = what + (", by the order " + state.order);
  }

  const std::vector<Program>& fPrograms;
  const std::uint32_t fSlabLimit;
  std::vector<::Memory::Block*> fHeldByNobody;
  std::unordered_set<std::pair<std::size_t, std::size_t>, HashOfSeen> fSeen;
  Result fResult;
};
