#include "json/JsonTextSink.h"

#include <algorithm>

namespace Tovrin::JSON {

void JsonTextSink::Grow(std::size_t size) {
  const auto used = static_cast<std::size_t>(fAt - fOut.data());
  fOut.resize(std::max({used + size, 2 * used, fOut.capacity()}));
  fAt = fOut.data() + used;
  fEnd = fOut.data() + fOut.size();
}

}  // namespace Tovrin::JSON
