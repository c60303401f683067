#include "host/Data.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Tovrin {

void Data::Interface_Assign(const void* bytes, std::size_t size) {
  fBytes.assign(static_cast<const char*>(bytes), size);
}

std::size_t Data::Interface_Read(void* buffer, std::size_t size, std::size_t offset) const {
  if (offset >= fBytes.size()) return 0;
  return fBytes.copy(static_cast<char*>(buffer), size, offset);
}

std::uint8_t Data::Interface_IsEqual(const IDataRef* other) const {
  if (!other || other->GetSize() != fBytes.size()) return 0;
  if (fBytes.empty()) return 1;
  if (const void* bytes = other->GetData()) {
    return std::memcmp(bytes, fBytes.data(), fBytes.size()) == 0 ? 1 : 0;
  }
  std::array<char, kCompareChunk> chunk;
  for (std::size_t offset = 0; offset < fBytes.size(); offset += chunk.size()) {
    const std::size_t count = std::min(chunk.size(), fBytes.size() - offset);
    if (other->Read(chunk.data(), count, offset) != count) return 0;
    if (std::memcmp(chunk.data(), fBytes.data() + offset, count) != 0) return 0;
  }
  return 1;
}

}  // namespace Tovrin
