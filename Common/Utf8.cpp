#include "Common/Utf8.h"

#include <algorithm>

#include "Common/TextDetection.h"

namespace {

unsigned char ByteAt(const char* at) {
  return static_cast<unsigned char>(*at);
}

bool IsFollowUp(const char* at) {
  return (ByteAt(at) & 0xC0) == 0x80;
}

// A lead byte: the size of its sequence, the bits of the value in it, and the least value that
// needs this size.
struct Lead {
  std::size_t size;
  char32_t bits;
  char32_t least;
};

Lead LeadOf(unsigned char byte) {
  if (byte < 0xC2) return {0, 0, 0};
  if (byte < 0xE0) return {2, byte & 0x1FU, 0x80};
  if (byte < 0xF0) return {3, byte & 0x0FU, 0x800};
  if (byte < 0xF8) return {4, byte & 0x07U, 0x10000};
  return {0, 0, 0};
}

// Goes over a byte that leads nothing, and the follow-up bytes that look as if they were its own.
char32_t SkipStray(const char*& at, const char* end) {
  const char* const limit = end - at > 5 ? at + 5 : end;
  do ++at;
  while (at < limit && IsFollowUp(at));
  return kIllFormed;
}

}  // namespace

char32_t DecodeMultiByte(const char*& at, const char* end) {
  const Lead lead = LeadOf(ByteAt(at));
  if (lead.size == 0) return SkipStray(at, end);

  char32_t value = lead.bits;
  const char* const first = at++;
  while (at < end && static_cast<std::size_t>(at - first) < lead.size && IsFollowUp(at)) {
    value = value << 6 | (ByteAt(at++) & 0x3FU);
  }
  const bool isWhole = static_cast<std::size_t>(at - first) == lead.size;
  return isWhole && value >= lead.least && IsScalarValue(value) ? value : kIllFormed;
}

void AppendUtf8(char32_t value, std::string& out) {
  const std::size_t size = Utf8Size(value);
  if (size == 1) {
    out += static_cast<char>(value);
    return;
  }
  constexpr unsigned kLeadMarks[] = {0, 0, 0xC0, 0xE0, 0xF0};
  unsigned shift = static_cast<unsigned>(size - 1) * 6;
  out += static_cast<char>(kLeadMarks[size] | value >> shift);
  while (shift != 0) {
    shift -= 6;
    out += static_cast<char>(0x80U | (value >> shift & 0x3FU));
  }
}

std::u32string WideFromUtf8(std::string_view bytes) {
  std::u32string wide;
  wide.reserve(CountUtf8(bytes));
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while (at < end) {
    const char32_t value = DecodeUtf8(at, end);
    if (value != kIllFormed) wide += value;
  }
  return wide;
}

std::string Utf8FromWide(std::u32string_view wide) {
  std::size_t size = 0;
  for (const char32_t value : wide) size += IsScalarValue(value) ? Utf8Size(value) : 0;

  std::string bytes;
  bytes.reserve(size);
  for (const char32_t value : wide) {
    if (IsScalarValue(value)) AppendUtf8(value, bytes);
  }
  return bytes;
}

bool IsWellFormedUtf8(std::string_view bytes) {
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while (true) {
    at += FindNonAscii(at, static_cast<std::size_t>(end - at));
    if (at == end) return true;
    if (DecodeMultiByte(at, end) == kIllFormed) return false;
  }
}

std::size_t Utf8Prefix(std::string_view bytes, std::size_t characters) {
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while (characters != 0 && at != end) {
    const auto left = static_cast<std::size_t>(end - at);
    const std::size_t plain = FindNonAscii(at, std::min(characters, left));
    at += plain;
    characters -= plain;
    while (characters != 0 && at != end && ByteAt(at) >= 0x80) {
      if (DecodeMultiByte(at, end) != kIllFormed) --characters;
    }
  }
  return static_cast<std::size_t>(at - bytes.data());
}

std::size_t CountUtf8(std::string_view bytes) {
  std::size_t count = 0;
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while (true) {
    const std::size_t plain = FindNonAscii(at, static_cast<std::size_t>(end - at));
    count += plain;
    at += plain;
    if (at == end) return count;
    while (at < end && ByteAt(at) >= 0x80) count += DecodeMultiByte(at, end) != kIllFormed;
  }
}
