#include "Common/CUnicodeString.h"

#include <algorithm>
#include <cstring>
#include <limits>

using Selvane::IUnicodeString;

namespace {

// A copy of a foreign text; none stands for the empty one.
CText TextOf(IUnicodeString* text) {
  CText copy;
  if (text) {
    copy.Assign(text->GetBytes(), text->GetByteSize(), EncodingId(text->GetEncodingName()));
  }
  return copy;
}

CText TextOf(const void* bytes, std::size_t size, const char* encoding) {
  CText text;
  text.Assign(bytes, size, EncodingId(encoding));
  return text;
}

}  // namespace

std::int64_t CUnicodeString::ToLong() const {
  const std::string_view digits = fText.Utf8();
  std::size_t pos = digits.find_first_not_of(" \t");
  if (pos == std::string_view::npos) return 0;

  const bool isNegative = digits[pos] == '-';
  if (isNegative || digits[pos] == '+') ++pos;
  // Counted downwards: the least number has no positive twin.
  std::int64_t value = 0;
  for (; pos < digits.size() && digits[pos] >= '0' && digits[pos] <= '9'; ++pos) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    const std::int64_t digit = digits[pos] - '0';
    value = value < (kLeast + digit) / 10 ? kLeast : value * 10 - digit;
  }
  if (isNegative) return value;
  return value == std::numeric_limits<std::int64_t>::min()
             ? std::numeric_limits<std::int64_t>::max()
             : -value;
}

std::uint32_t CUnicodeString::AddRef() const {
  return CUseCounted::AddRef();
}

bool CUnicodeString::Release() const {
  return CUseCounted::Release();
}

std::uint32_t CUnicodeString::GetUseCount() const {
  return UseCount();
}

void CUnicodeString::Assign(const void* bytes, std::size_t size, const char* encoding) {
  fText.Assign(bytes, size, EncodingId(encoding));
}

void CUnicodeString::Assign(IUnicodeString* other) {
  if (!other || other == this) return;
  fText.Assign(other->GetBytes(), other->GetByteSize(), EncodingId(other->GetEncodingName()));
}

void CUnicodeString::Append(const void* bytes, std::size_t size, const char* encoding) {
  fText.Append(bytes, size, EncodingId(encoding));
}

void CUnicodeString::Append(IUnicodeString* other) {
  fText.Append(TextOf(other));
}

bool CUnicodeString::Equals(const void* bytes, std::size_t size, const char* encoding) {
  return Compare(bytes, size, encoding) == 0;
}

std::int32_t CUnicodeString::Compare(const void* bytes, std::size_t size, const char* encoding) {
  return fText.Compare(TextOf(bytes, size, encoding));
}

std::int32_t CUnicodeString::Compare(IUnicodeString* other) {
  return fText.Compare(TextOf(other));
}

std::int32_t CUnicodeString::Compare(const char* text, const char* encoding) {
  return Compare(text, text ? std::strlen(text) : 0, encoding);
}

std::size_t CUnicodeString::Read(void* buffer, std::size_t size, const char* encoding) {
  const std::string bytes = fText.ToNarrow(EncodingId(encoding));
  const std::size_t count = std::min(size, bytes.size());
  if (count != 0) std::memcpy(buffer, bytes.data(), count);
  return count;
}
