// Fuzz target for the operations of a buffer: the bytes are a program of operations that runs on a
// buffer and on a plain string beside it. Whatever moves between memory and file in between, both
// hold the same bytes, and a search finds in both the same places.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CBuffer.h"
#include "fuzz/Require.h"

namespace {

constexpr std::size_t kMostOperations = 64;

// Takes numbers and texts off the front of the input.
class Script {
public:
  Script(const std::uint8_t* data, std::size_t size) : fData(data), fSize(size) {}

  bool IsAtEnd() const { return fSize == 0; }
  std::size_t Number() {
    if (fSize == 0) return 0;
    --fSize;
    return *fData++;
  }
  // A place in a text of that size, or one behind it.
  std::size_t Place(std::size_t size) { return Number() * 257 % (size + 2); }
  std::string Text() {
    const std::size_t size = std::min(Number(), fSize);
    const std::string text(reinterpret_cast<const char*>(fData), size);
    fData += size;
    fSize -= size;
    return text;
  }

private:
  const std::uint8_t* fData;
  std::size_t fSize;
};

std::string BytesOf(CBuffer& buffer) {
  std::string bytes(buffer.GetSize(), '\0');
  bytes.resize(buffer.ReadAt(0, bytes.data(), bytes.size()));
  return bytes;
}

void CheckSearch(CBuffer& buffer, const std::string& bytes, const std::string& pattern) {
  std::vector<std::size_t> found;
  buffer.GetAllOccurrences(found, pattern.data(), pattern.size(), 0, bytes.size());
  std::vector<std::size_t> expected;
  for (std::size_t at = pattern.empty() ? std::string::npos : bytes.find(pattern);
       at != std::string::npos; at = bytes.find(pattern, at + pattern.size())) {
    expected.push_back(at);
  }
  Require(found == expected, "a search finds what a string's find does");
}

void CheckFrame(CBuffer& buffer, const std::string& bytes) {
  std::size_t length = 0;
  const char* frame = buffer.GetChunkFrame(&length, bytes.size());
  if (!frame) return;
  const std::string_view text(frame, length);
  const std::size_t line = text.find("\r\n");
  Require(text.substr(line + 2) == bytes + "\r\n", "a frame holds the payload");
  Require(std::strtoull(frame, nullptr, 16) == bytes.size(), "and its size");
}

void Step(Script& script, CBuffer& buffer, std::string& bytes) {
  const std::size_t operation = script.Number() % 12;
  const std::size_t place = script.Place(bytes.size());
  const std::string text = script.Text();
  const bool isInside = place <= bytes.size();
  switch (operation) {
    case 0:
      Require(buffer.Append(text.data(), text.size()), "appending works");
      bytes += text;
      break;
    case 1:
      Require(buffer.Insert(place, text.data(), text.size()) == isInside, "inserting where it may");
      if (isInside) bytes.insert(place, text);
      break;
    case 2:
      buffer.Erase(place, text.size());
      if (isInside) bytes.erase(place, text.size());
      break;
    case 3:
      buffer.RemoveFront(place);
      bytes.erase(0, place);
      break;
    case 4: {
      const bool fits = isInside && text.size() <= bytes.size() - place;
      Require(buffer.Overwrite(place, text.data(), text.size()) == fits, "overwriting in range");
      if (fits) bytes.replace(place, text.size(), text);
      break;
    }
    case 5:
      Require(buffer.Assign(text.data(), text.size()), "assigning works");
      bytes = text;
      break;
    case 6: {
      Require((buffer.SeekWrite(static_cast<std::int64_t>(place), 0) >= 0) == isInside,
              "seeking in range");
      if (!isInside) break;
      Require(buffer.Write(text.data(), text.size()) == text.size(), "writing works");
      bytes.replace(place, text.size(), text);
      break;
    }
    case 7:
      Require(buffer.SwapOut(), "swapping out works");
      break;
    case 8:
      Require(buffer.SwapIn(), "swapping in works");
      break;
    case 9:
      Require(buffer.Freeze() && buffer.Thaw(), "freezing and thawing work");
      break;
    case 10:
      CheckSearch(buffer, bytes, text);
      break;
    default:
      CheckFrame(buffer, bytes);
      buffer.Clear(place);
      bytes.clear();
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Script script(data, size);
  CBuffer buffer;
  std::string bytes;
  for (std::size_t i = 0; i < kMostOperations && !script.IsAtEnd(); ++i) {
    Step(script, buffer, bytes);
    Require(BytesOf(buffer) == bytes, "the buffer holds what the string holds");
  }
  return 0;
}
