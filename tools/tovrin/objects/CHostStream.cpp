#include "tools/tovrin/objects/CHostStream.h"

#include <algorithm>

namespace RefHost {

std::size_t CHostStream::Interface_Read(void* buffer, std::size_t size, std::size_t offset) const {
  if (offset < fDiscarded || offset - fDiscarded >= fBytes.size()) return 0;
  return fBytes.copy(static_cast<char*>(buffer), size, offset - fDiscarded);
}

void CHostStream::Interface_DiscardBefore(std::size_t offset) {
  if (offset <= fDiscarded) return;
  const std::size_t count = std::min(offset - fDiscarded, fBytes.size());
  fBytes.erase(0, count);
  fDiscarded += count;
}

}  // namespace RefHost
