#pragma once

#include <cstddef>
#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/IObject.h"

namespace Tovrin {

// Bytes that the host or the module holds. GetData is null where they do not lie in one piece: Read
// then.
class TOVRIN_API IDataRef : public IObject {
public:
  std::size_t GetSize() const { return Interface_GetSize(); }
  void Assign(const void* bytes, std::size_t size) { Interface_Assign(bytes, size); }
  std::size_t Read(void* buffer, std::size_t size, std::size_t offset) const {
    return Interface_Read(buffer, size, offset);
  }
  bool IsEqual(const IDataRef* other) const { return other && Interface_IsEqual(other) == 1; }
  AutoRefPtr<IDataRef> Clone() const { return AutoRefPtr<IDataRef>(Interface_Clone()); }
  const void* GetData() const { return Interface_GetData(); }

protected:
  ~IDataRef() = default;

private:  // Contract: the host calls these by position
  virtual std::size_t Interface_GetSize() const = 0;
  virtual void Interface_Assign(const void* bytes, std::size_t size) = 0;
  virtual std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t offset) const = 0;
  virtual std::uint8_t Interface_IsEqual(const IDataRef* other) const = 0;
  virtual IDataRef* Interface_Clone() const = 0;
  virtual const void* Interface_GetData() const { return nullptr; }
};

}  // namespace Tovrin
