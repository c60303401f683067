#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace Selvane {

// Root of the common library's own interfaces. The order of the operations is part of the contract
// with what was built against them: the deletion of an object runs through CUseCounted, so there is
// no destructor in the table.
class IObject {
public:
  virtual std::uint32_t AddRef() const = 0;  // the new count
  virtual bool Release() const = 0;          // true when that destroyed the object
  virtual std::uint32_t GetUseCount() const = 0;

protected:
  ~IObject() = default;
};

}  // namespace Selvane

// Base of the use-counted objects of the common library. An object starts with one reference, its
// creator's, and deletes itself when the last one goes. Any thread may take and drop references.
//
// The operations are const, so that one object can have this base and an interface root beside it:
// a class with both overrides the interface's three and forwards them here.
class CUseCounted {
public:
  CUseCounted(const CUseCounted&) = delete;
  CUseCounted& operator=(const CUseCounted&) = delete;

  // The new count.
  virtual std::uint32_t AddRef() const {
    return fUseCount.fetch_add(1, std::memory_order_relaxed) + 1;
  }
  // True when that destroyed the object. The release half makes every earlier use of the object
  // visible to the thread whose acquire half destroys it.
  virtual bool Release() const {
    if (fUseCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return false;
    delete this;
    return true;
  }
  virtual ~CUseCounted() = default;

  // Who reads 1 and holds that one reference is alone with the object: the acquire pairs with the
  // release in Release, so what earlier holders did with it is over.
  std::uint32_t UseCount() const { return fUseCount.load(std::memory_order_acquire); }

protected:
  CUseCounted() = default;

private:
  mutable std::atomic<std::uint32_t> fUseCount{1};
};

// Holds one reference on a T that derives from CUseCounted (or has its AddRef and Release), or
// none. Construction from a raw pointer takes over the caller's reference; ShareUse takes one more.
template <class T>
class CUsePtr {
public:
  CUsePtr() = default;
  CUsePtr(std::nullptr_t) {}
  explicit CUsePtr(T* adopted) : fPointer(adopted) {}
  CUsePtr(const CUsePtr& other) : fPointer(other.fPointer) {
    if (fPointer) fPointer->AddRef();
  }
  CUsePtr(CUsePtr&& other) noexcept : fPointer(std::exchange(other.fPointer, nullptr)) {}
  CUsePtr& operator=(CUsePtr other) noexcept {
    std::swap(fPointer, other.fPointer);
    return *this;
  }
  ~CUsePtr() { Reset(); }

  T* Get() const { return fPointer; }
  T* operator->() const { return fPointer; }
  T& operator*() const { return *fPointer; }
  explicit operator bool() const { return fPointer != nullptr; }
  bool operator==(const CUsePtr& other) const = default;

  // Gives up the pointer, and with it the reference, to the caller.
  [[nodiscard]] T* Detach() { return std::exchange(fPointer, nullptr); }
  // The field is empty before the reference goes: a destructor that comes back here finds nothing.
  void Reset() {
    if (T* old = std::exchange(fPointer, nullptr)) old->Release();
  }

private:
  T* fPointer = nullptr;
};

// One more reference on a borrowed pointer, which may be null.
template <class T>
CUsePtr<T> ShareUse(T* borrowed) {
  if (borrowed) borrowed->AddRef();
  return CUsePtr<T>(borrowed);
}

template <class T, class... Arguments>
CUsePtr<T> MakeUseCounted(Arguments&&... arguments) {
  return CUsePtr<T>(new T(std::forward<Arguments>(arguments)...));
}

// A use-counted box around a value that has no count of its own; the value dies with the box.
template <class T>
class CUseCountedWrapper : public CUseCounted {
public:
  explicit CUseCountedWrapper(T* owned) : fValue(owned) {}
  ~CUseCountedWrapper() override { delete fValue; }

  T* Value() const { return fValue; }

private:
  T* fValue;
};

// A counted reference to such a box, read as a pointer to the value in it.
template <class T>
class CUseCountedWrapperPtr {
public:
  T* Get() const { return fBox ? fBox->Value() : nullptr; }
  T* operator->() const { return Get(); }
  T& operator*() const { return *Get(); }
  explicit operator bool() const { return Get() != nullptr; }

protected:
  CUseCountedWrapperPtr() = default;
  explicit CUseCountedWrapperPtr(CUseCountedWrapper<T>* adopted) : fBox(adopted) {}

private:
  CUsePtr<CUseCountedWrapper<T>> fBox;
};

// Shared ownership of a plain value: puts it into a box of its own; copies share the box.
template <class T>
class CUseCountedSharedPtr : public CUseCountedWrapperPtr<T> {
public:
  CUseCountedSharedPtr() = default;
  explicit CUseCountedSharedPtr(T* owned)
      : CUseCountedWrapperPtr<T>(new CUseCountedWrapper<T>(owned)) {}
};
