#pragma once

#include <utility>

namespace Tovrin {

// The one smart pointer of the host interfaces: an object, counted, or empty.
//
// T is an interface, a const interface or a concrete class. One AutoRefPtr is for one thread; the
// object's count is atomic.
//
// Invariant: the field is emptied before Release runs, so a destructor that comes back sees no
// pointer to a dying object.
template <class T>
class AutoRefPtr {
public:
  using Element = T;

  AutoRefPtr() noexcept = default;
  explicit AutoRefPtr(T* pointer) noexcept : fPointer(pointer) {}  // takes over one reference
  AutoRefPtr(const AutoRefPtr& other) : fPointer(other.fPointer) { AddRefImpl(); }
  AutoRefPtr(AutoRefPtr&& other) noexcept : fPointer(std::exchange(other.fPointer, nullptr)) {}
  AutoRefPtr& operator=(const AutoRefPtr& other) { return *this = AutoRefPtr(other); }
  AutoRefPtr& operator=(AutoRefPtr&& other) noexcept {
    if (this != &other) {
      T* taken = std::exchange(other.fPointer, nullptr);
      ReleaseImpl();
      fPointer = taken;
    }
    return *this;
  }
  ~AutoRefPtr() { ReleaseImpl(); }

  T* get() const noexcept { return fPointer; }
  T* release() noexcept { return std::exchange(fPointer, nullptr); }
  void reset() { ReleaseImpl(); }
  T* operator->() const noexcept { return fPointer; }
  explicit operator bool() const noexcept { return fPointer != nullptr; }

private:
  void AddRefImpl() const {
    if (fPointer) fPointer->AddRef();
  }
  void ReleaseImpl() {
    if (T* old = std::exchange(fPointer, nullptr)) old->Release();
  }
  T* fPointer = nullptr;
};

// One MORE reference on a borrowed pointer (the only way to make an AutoRefPtr of a borrowed one).
template <class T>
AutoRefPtr<T> Share(T* borrowed) {
  if (borrowed) borrowed->AddRef();
  return AutoRefPtr<T>(borrowed);
}

}  // namespace Tovrin
