#pragma once

#include <atomic>
#include <cstdint>

namespace Tovrin {

// Base of every class of the module that stands behind a host interface: the reference count.
//
// The creator owns the first reference. Any thread may take and drop references; the one that drops
// the last deletes the object. Derived classes keep their destructor protected or private.
template <class I>
class InterfaceImpl : public I {
public:
  InterfaceImpl(const InterfaceImpl&) = delete;
  InterfaceImpl& operator=(const InterfaceImpl&) = delete;

protected:
  InterfaceImpl() = default;

private:
  void Interface_AddRef() const override { fReferences.fetch_add(1, std::memory_order_relaxed); }
  bool Interface_Release() const override {
    if (fReferences.fetch_sub(1, std::memory_order_acq_rel) != 1) return false;
    delete this;
    return true;
  }
  std::int32_t Interface_GetCount() const override {
    return fReferences.load(std::memory_order_relaxed);
  }

  mutable std::atomic<std::int32_t> fReferences{1};  // first field after the table pointer

protected:
  // Last in the table; two slots in the Itanium ABI.
  virtual ~InterfaceImpl() = default;  // NOLINT(modernize-use-override): few interfaces have one
};

}  // namespace Tovrin
