#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace Tovrin::JSON {

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
    std::memcpy(Room(text.size()), text.data(), text.size());
    fAt += text.size();
  }

private:
  void Grow(std::size_t size) {
    const auto used = static_cast<std::size_t>(fAt - fOut.data());
    fOut.resize(std::max({used + size, 2 * used, fOut.capacity()}));
    fAt = fOut.data() + used;
    fEnd = fOut.data() + fOut.size();
  }

  std::string& fOut;
  char* fAt;
  char* fEnd;
};

}  // namespace Tovrin::JSON
