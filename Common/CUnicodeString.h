#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/CText.h"
#include "Common/CUseCounted.h"
#include "Common/IUnicodeString.h"

// The library's text behind IUnicodeString: a use-counted object around one CText.
//
// The interface's operations are for its callers, one thread at a time. Inside the library a const
// CUnicodeString is read through Text() and the const members, by any number of threads at once.
class CUnicodeString : public Selvane::IUnicodeString, public CUseCounted {
public:
  CUnicodeString() = default;
  explicit CUnicodeString(std::string_view bytes, std::uint32_t encoding = Charset::Utf8)
      : fText(bytes, encoding) {}
  explicit CUnicodeString(CText text) : fText(std::move(text)) {}

  // ---- inside the library

  const CText& Text() const { return fText; }
  bool EqualsIgnoringCase(const CUnicodeString& other) const {
    return fText.EqualsIgnoringCase(other.fText);
  }
  bool StartsWithIgnoringCase(const CUnicodeString& prefix) const {
    return fText.StartsWithIgnoringCase(prefix.fText);
  }
  bool EndsWithIgnoringCase(const CUnicodeString& suffix) const {
    return fText.EndsWithIgnoringCase(suffix.fText);
  }
  // Index of the character, or CText::kNotFound.
  std::uint64_t FindIgnoringCase(const CUnicodeString& wanted) const {
    return fText.FindIgnoringCase(wanted.fText);
  }
  std::string ToNarrow(std::uint32_t encoding) const { return fText.ToNarrow(encoding); }

  // The decimal number at the beginning, behind blanks and tabs and one sign, up to the first other
  // character. Without a digit 0; beyond 64 bits the nearest number that fits.
  std::int64_t ToLong() const;

  // ---- Selvane::IObject

  std::uint32_t AddRef() const override;
  bool Release() const override;
  std::uint32_t GetUseCount() const override;

  // ---- Selvane::IUnicodeString

  std::uint64_t GetLength() override { return fText.Length(); }
  std::uint64_t GetByteSize() override { return fText.Bytes().size(); }
  const char* GetBytes() override { return fText.Bytes().data(); }
  const char* GetEncodingName() override { return EncodingName(fText.Encoding()); }
  bool IsEmpty() override { return fText.IsEmpty(); }
  void Reserve(std::uint64_t characters) override { fText.Reserve(characters); }
  void Assign(const void* bytes, std::size_t size, const char* encoding) override;
  void Assign(Selvane::IUnicodeString* other) override;
  void Append(const void* bytes, std::size_t size, const char* encoding) override;
  void Append(Selvane::IUnicodeString* other) override;
  void Erase(std::size_t position, std::size_t count) override { fText.Erase(position, count); }
  void Clear() override { fText.Clear(); }
  bool Equals(Selvane::IUnicodeString* other) override { return Compare(other) == 0; }
  bool Equals(const void* bytes, std::size_t size, const char* encoding) override;
  std::int32_t Compare(const void* bytes, std::size_t size, const char* encoding) override;
  std::int32_t Compare(Selvane::IUnicodeString* other) override;
  std::int32_t Compare(const char* text, const char* encoding) override;
  std::size_t Read(void* buffer, std::size_t size, const char* encoding) override;
  const char* GetUtf8() override { return fText.Utf8().data(); }

private:
  CText fText;
};
