#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

// A raw store of plain values: up to 8 bytes of them lie inside the object, more in one block of
// the heap, aligned for anything. Knows nothing of what its owner keeps in it: neither construction
// nor destruction of elements happens here, and moving bytes is left to the owner where the
// elements cannot be moved as bytes.
//
// Not copyable and not movable as bytes: the data pointer of a short store points into the object.
// Sizes and capacities are counts of T. Memory that cannot be had ends in std::bad_alloc, before
// anything has changed.
template <class T>
class qzvector {
  static_assert(std::is_trivially_copyable_v<T>);

public:
  static constexpr std::size_t kInlineBytes = 8;
  static constexpr std::uint64_t kInlineCapacity = kInlineBytes / sizeof(T);
  static_assert(kInlineCapacity > 0);

  qzvector() = default;
  qzvector(const qzvector&) = delete;
  qzvector& operator=(const qzvector&) = delete;
  virtual ~qzvector() { FreeBlock(); }

  T* Data() { return fData; }
  const T* Data() const { return fData; }
  std::uint64_t Size() const { return fUsed; }
  std::uint64_t Capacity() const { return fCapacity; }
  bool IsInline() const { return fData == InlineData(); }

  // Counts more or fewer of the values that lie within the capacity.
  void SetSize(std::uint64_t size) { fUsed = size; }

  // Room for exactly so many new values; the old ones are forgotten, and the new ones are raw. A
  // block that is more than twice too large goes, and a size that fits inside comes home.
  void ResizeForNewValue(std::uint64_t size) {
    if (size > fCapacity) {
      ReplaceBlock(Allocate(size), size);
    } else if (!IsInline()) {
      if (size <= kInlineCapacity) {
        FreeBlock();
        ComeHome();
      } else if (2 * size < fCapacity) {
        ReplaceBlock(Allocate(size), size);
      }
    }
    fUsed = size;
  }

  // The capacity that a growing list takes: doubled, with one element as the floor, until it fits.
  std::uint64_t GrownCapacity(std::uint64_t needed, std::uint64_t elementSize) const {
    std::uint64_t capacity = fCapacity;
    while (capacity < needed) {
      if (capacity > kMaxSize / 2) throw std::bad_alloc();
      capacity = std::max(2 * capacity, elementSize);
    }
    return capacity;
  }

  // A larger block, into which the owner's move brings the values over: move(to, from).
  template <class Move>
  void GrowKeeping(std::uint64_t capacity, Move move) {
    T* block = Allocate(capacity);
    move(block, fData);
    ReplaceBlock(block, capacity);
  }

  // Takes over what other holds, as bytes, and leaves it empty. What was here is forgotten.
  void TakeFrom(qzvector& other) {
    FreeBlock();
    if (other.IsInline()) {
      ComeHome();
      std::memcpy(fInline, other.fInline, kInlineBytes);
    } else {
      fData = other.fData;
      fCapacity = other.fCapacity;
    }
    fUsed = std::exchange(other.fUsed, 0);
    other.ComeHome();
  }

private:
  static constexpr std::uint64_t kMaxSize = std::numeric_limits<std::int64_t>::max() / sizeof(T);

  const T* InlineData() const { return reinterpret_cast<const T*>(fInline); }

  static T* Allocate(std::uint64_t capacity) {
    if (capacity > kMaxSize) throw std::bad_alloc();
    return static_cast<T*>(::operator new(capacity * sizeof(T)));
  }
  void FreeBlock() {
    if (!IsInline()) ::operator delete(fData);
  }
  void ReplaceBlock(T* block, std::uint64_t capacity) {
    FreeBlock();
    fData = block;
    fCapacity = capacity;
  }
  void ComeHome() {
    fData = reinterpret_cast<T*>(fInline);
    fCapacity = kInlineCapacity;
  }

  alignas(8) unsigned char fInline[kInlineBytes] = {};
  T* fData = reinterpret_cast<T*>(fInline);
  std::uint64_t fUsed = 0;                    // size, in T
  std::uint64_t fCapacity = kInlineCapacity;  // room at fData, in T
};
