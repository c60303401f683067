#pragma once

#include <atomic>
#include <cstddef>

namespace Matching {

// Memory that what learns from texts may take together: the automata of a list, and what its
// expressions keep to work in. Any thread may take of it.
class MemoryAllowance {
public:
  explicit MemoryAllowance(std::size_t bytes) : fSize(bytes), fLeft(bytes) {}
  MemoryAllowance(const MemoryAllowance&) = delete;
  MemoryAllowance& operator=(const MemoryAllowance&) = delete;

  [[nodiscard]] bool Take(std::size_t bytes) {
    std::size_t left = fLeft.load(std::memory_order_relaxed);
    while (left >= bytes) {
      if (fLeft.compare_exchange_weak(left, left - bytes, std::memory_order_relaxed)) return true;
    }
    return false;
  }
  void GiveBack(std::size_t bytes) { fLeft.fetch_add(bytes, std::memory_order_relaxed); }

  [[nodiscard]] std::size_t Taken() const { return fSize - fLeft.load(std::memory_order_relaxed); }

private:
  const std::size_t fSize;
  std::atomic<std::size_t> fLeft;
};

// Holds bytes of an allowance, where there is one, and gives them back.
class MemoryShare {
public:
  explicit MemoryShare(MemoryAllowance* allowance) : fAllowance(allowance) {}
  MemoryShare(const MemoryShare&) = delete;
  MemoryShare& operator=(const MemoryShare&) = delete;
  ~MemoryShare() { GiveBack(); }

  // Of one that holds nothing. Without an allowance everything is granted.
  [[nodiscard]] bool Take(std::size_t bytes) {
    if (fAllowance == nullptr) return true;
    if (!fAllowance->Take(bytes)) return false;
    fBytes = bytes;
    return true;
  }
  void GiveBack() {
    if (fBytes > 0) fAllowance->GiveBack(fBytes);
    fBytes = 0;
  }

private:
  MemoryAllowance* const fAllowance;
  std::size_t fBytes = 0;
};

}  // namespace Matching
