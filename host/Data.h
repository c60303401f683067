#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "host/IDataRef.h"
#include "host/InterfaceImpl.h"

namespace Tovrin {

// The module's own data reference: a byte container. No lock.
class Data : public InterfaceImpl<IDataRef> {
public:
  static constexpr std::size_t kCompareChunk = 8192;  // bytes read at a time from a foreign one

  Data() = default;
  explicit Data(std::string bytes) : fBytes(std::move(bytes)) {}

private:
  std::size_t Interface_GetSize() const override { return fBytes.size(); }
  void Interface_Assign(const void* bytes, std::size_t size) override;
  std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t offset) const override;
  std::uint8_t Interface_IsEqual(const IDataRef* other) const override;
  IDataRef* Interface_Clone() const override { return new Data(fBytes); }
  const void* Interface_GetData() const override { return fBytes.data(); }

  std::string fBytes;
};

}  // namespace Tovrin
