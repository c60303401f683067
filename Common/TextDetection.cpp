#include "Common/TextDetection.h"

#include <cstring>

#include "Common/EncodingRegistry.h"
#include "Common/EnvironmentSwitch.h"

namespace {

constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kHighBits = 0x8080808080808080;

bool IsGb18030Disabled() {
  static const bool disabled = EnvironmentSaysYes("QRX_DISABLE_GB18030");
  return disabled;
}

// Read when the library is loaded; the function serves initialisers that ask even earlier.
[[maybe_unused]] const bool gReadAtStart = IsGb18030Disabled();

std::uint64_t LoadWord(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// High bits set if, and only if, some byte of the word is what is looked for. Which ones are set
// does not tell which byte: a borrow runs on.
struct AnyNonAscii {
  static std::uint64_t In(std::uint64_t word) { return word & kHighBits; }
  static bool Is(unsigned char byte) { return byte >= 0x80; }
};
struct AnyZeroOrNonAscii {
  static std::uint64_t In(std::uint64_t word) { return ((word - kOnes) | word) & kHighBits; }
  static bool Is(unsigned char byte) { return byte == 0 || byte >= 0x80; }
};

// Perf: four words a step, so that the test and the jump are paid once in 32 bytes;
// TextDetectionBench.
template <class Wanted>
std::size_t FindByte(const char* bytes, std::size_t size) {
  std::size_t pos = 0;
  for (; pos + 32 <= size; pos += 32) {
    const char* at = bytes + pos;
    if (Wanted::In(LoadWord(at)) | Wanted::In(LoadWord(at + 8)) | Wanted::In(LoadWord(at + 16)) |
        Wanted::In(LoadWord(at + 24))) {
      break;
    }
  }
  for (; pos + 8 <= size; pos += 8) {
    if (Wanted::In(LoadWord(bytes + pos))) break;
  }
  while (pos < size && !Wanted::Is(static_cast<unsigned char>(bytes[pos]))) ++pos;
  return pos;
}

// Bytes that follow a lead byte, 0 when it is none: 10xxxxxx, 0xFE and 0xFF lead nothing.
std::size_t FollowUpBytes(unsigned char lead) {
  if (lead < 0xC0) return 0;
  if (lead < 0xE0) return 1;
  if (lead < 0xF0) return 2;
  if (lead < 0xF8) return 3;
  if (lead < 0xFC) return 4;
  return lead < 0xFE ? 5 : 0;
}

bool IsFollowUp(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

bool IsBetween(char byte, unsigned char first, unsigned char last) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= first && value <= last;
}

// Bytes of the two- or four-byte form at the beginning, 0 when there is none.
std::size_t Gb18030FormSize(const char* bytes, std::size_t size) {
  if (size < 2 || !IsBetween(bytes[0], 129, 254)) return 0;
  if (IsBetween(bytes[1], 64, 254)) return IsBetween(bytes[1], 127, 127) ? 0 : 2;
  if (size < 4) return 0;
  const bool isFour =
      IsBetween(bytes[1], 48, 57) && IsBetween(bytes[2], 129, 254) && IsBetween(bytes[3], 48, 57);
  return isFour ? 4 : 0;
}

}  // namespace

std::size_t FindZeroOrNonAscii(const char* bytes, std::size_t size) {
  return FindByte<AnyZeroOrNonAscii>(bytes, size);
}

std::size_t FindNonAscii(const char* bytes, std::size_t size) {
  return FindByte<AnyNonAscii>(bytes, size);
}

bool IsValidUtf8(const char* bytes, std::size_t size) {
  std::size_t pos = 0;
  while (true) {
    pos += FindZeroOrNonAscii(bytes + pos, size - pos);
    if (pos == size) return true;
    // Scripts outside ASCII come in runs: stay here while one lasts.
    for (; pos < size && static_cast<unsigned char>(bytes[pos]) >= 0x80;) {
      const std::size_t followUps = FollowUpBytes(static_cast<unsigned char>(bytes[pos]));
      if (followUps == 0 || size - pos <= followUps) return false;
      for (std::size_t i = 1; i <= followUps; ++i) {
        if (!IsFollowUp(bytes[pos + i])) return false;
      }
      pos += followUps + 1;
    }
    if (pos < size && bytes[pos] == 0) return false;
  }
}

bool IsGb18030(const char* bytes, std::size_t size) {
  std::size_t pos = 0;
  while (true) {
    pos += FindNonAscii(bytes + pos, size - pos);
    if (pos == size) return true;
    while (pos < size && static_cast<unsigned char>(bytes[pos]) >= 0x80) {
      const std::size_t form = Gb18030FormSize(bytes + pos, size - pos);
      if (form == 0) return false;
      pos += form;
    }
  }
}

int DetectEncoding(const char* bytes, std::size_t size) {
  const std::size_t first = FindZeroOrNonAscii(bytes, size);
  if (first == size) return 0;
  if (bytes[first] == 0) return 3;
  // What stands before it is 7-bit and has no zero, so the tests can begin here.
  if (IsValidUtf8(bytes + first, size - first)) return 1;
  return !IsGb18030Disabled() && IsGb18030(bytes + first, size - first) ? 2 : 3;
}

std::uint32_t EncodingOfDetection(int detected) {
  switch (detected) {
    case 0:
      return Charset::Ascii;
    case 1:
      return Charset::Utf8;
    case 2:
      return Charset::Gb18030;
    default:
      return Charset::Latin1;
  }
}
