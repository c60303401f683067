#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace Tovrin::JSON {

// Perf: names, short texts and numbers are what is copied most; for these a call of memcpy costs
// more than the copying (bench/json, writing citm_catalog).
inline void CopyBytes(std::string_view from, char* to) {
  const std::size_t size = from.size();
  // Two steps that overlap, of as many bytes each.
  const auto copyEnds = [&](auto step) {
    std::memcpy(to, from.data(), step);
    std::memcpy(to + size - step, from.data() + size - step, step);
  };
  if (size > 32) {
    std::memcpy(to, from.data(), size);
  } else if (size >= 16) {
    copyEnds(std::integral_constant<std::size_t, 16>());
  } else if (size >= 8) {
    copyEnds(std::integral_constant<std::size_t, 8>());
  } else if (size >= 4) {
    copyEnds(std::integral_constant<std::size_t, 4>());
  } else {
    for (std::size_t i = 0; i < size; ++i) to[i] = from[i];
  }
}

// Appends to a string by way of pointers.
//
// Perf: append and push_back look at the capacity through three fields and write the terminator
// each time; here a token costs one comparison (bench/json, writing). The string is sized ahead and
// cut to what was written at the end.
class JsonTextSink {
public:
  explicit JsonTextSink(std::string& out) : fOut(out), fAt(out.data() + out.size()), fEnd(fAt) {}
  ~JsonTextSink() { fOut.resize(static_cast<std::size_t>(fAt - fOut.data())); }
  JsonTextSink(const JsonTextSink&) = delete;
  JsonTextSink& operator=(const JsonTextSink&) = delete;

  // Where that many bytes may be written; Advance tells how many were.
  char* Room(std::size_t size) {
    if (static_cast<std::size_t>(fEnd - fAt) < size) Grow(size);
    return fAt;
  }
  void Advance(std::size_t size) { fAt += size; }

  void Write(char c) {
    *Room(1) = c;
    ++fAt;
  }
  void Write(std::string_view text) {
    if (text.empty()) return;
    CopyBytes(text, Room(text.size()));
    fAt += text.size();
  }

private:
  void Grow(std::size_t size);

  std::string& fOut;
  char* fAt;
  char* fEnd;
};

}  // namespace Tovrin::JSON
