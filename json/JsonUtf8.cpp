#include <cstddef>
#include <cstdint>

#include "json/JsonParser.h"
#include "json/JsonTextScan.h"

namespace Tovrin::JSON {

namespace {

// Follow-up bytes that a lead byte asks for; 0 for a byte that leads nothing.
int FollowersOf(unsigned char lead) {
  if ((lead & 0xE0) == 0xC0) return 1;
  if ((lead & 0xF0) == 0xE0) return 2;
  if ((lead & 0xF8) == 0xF0) return 3;
  return 0;
}

// The bytes of the multi-byte sequence at a lead byte, or 0 when it is broken.
int SequenceSize(const char* at, const char* end) {
  const int followers = FollowersOf(static_cast<unsigned char>(*at));
  if (followers == 0 || end - at <= followers) return 0;
  for (int i = 1; i <= followers; ++i) {
    if ((static_cast<unsigned char>(at[i]) & 0xC0) != 0x80) return 0;
  }
  return followers + 1;
}

}  // namespace

bool IsValidUtf8(std::string_view text, std::size_t* badOffset) {
  const char* at = text.data();
  const char* const end = at + text.size();
  bool isValid = true;
  while (at != end) {
    // Perf: plain ASCII in steps of 32 and 8 bytes (bench/json, parsing).
    while (end - at >= 32 &&
           ((LoadWord(at) | LoadWord(at + 8) | LoadWord(at + 16) | LoadWord(at + 24)) &
            Repeated(0x80)) == 0) {
      at += 32;
    }
    while (end - at >= 8 && (LoadWord(at) & Repeated(0x80)) == 0) at += 8;
    while (at != end && static_cast<unsigned char>(*at) < 0x80) ++at;
    // Texts in other scripts come in runs.
    while (at != end && static_cast<unsigned char>(*at) >= 0x80) {
      const int size = SequenceSize(at, end);
      if (size == 0) {
        isValid = false;
        break;
      }
      at += size;
    }
    if (!isValid) break;
  }
  if (badOffset) *badOffset = static_cast<std::size_t>(at - text.data());
  return isValid;
}

}  // namespace Tovrin::JSON
