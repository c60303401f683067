#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/CStringImpl.h"

// A text as a value: a counted pointer to a CStringImpl, or none, which means the empty text.
//
// Copies share the object; whatever changes a text makes it private first. One handle belongs to
// one thread at a time, the object behind it may be read by many. What is handed out as a pointer
// or a view lives until the next change through this handle.
class CText {
public:
  static constexpr std::uint64_t kNotFound = kTextNotFound;

  CText() = default;
  explicit CText(std::string_view bytes, std::uint32_t encoding = Charset::Utf8)
      : fImpl(MakeUseCounted<CStringImpl>(bytes, encoding)) {}
  explicit CText(CUsePtr<CStringImpl> impl) : fImpl(std::move(impl)) {}

  // ---- reading

  CStringImpl* Impl() const { return fImpl.Get(); }  // borrowed; null for the empty handle
  // True without an object, without a character, or without bytes.
  bool IsEmpty() const { return !fImpl || fImpl->IsEmpty(); }
  std::uint64_t Length() const { return fImpl ? fImpl->Length() : 0; }  // characters
  std::string_view Bytes() const { return fImpl ? fImpl->Bytes() : std::string_view(""); }
  std::uint32_t Encoding() const { return fImpl ? fImpl->Encoding() : Charset::Ascii; }
  std::string_view Utf8() const { return fImpl ? fImpl->Utf8() : std::string_view(""); }
  std::u32string_view Wide() const { return fImpl ? fImpl->Wide() : std::u32string_view(); }
  // The text in another encoding; its bytes as they are where there is no conversion.
  std::string ToNarrow(std::uint32_t encoding) const;

  // The code point at that index; 0 beyond the end.
  char32_t At(std::uint64_t index) const;
  // Index of the first such code point from a position on, or kNotFound.
  std::uint64_t FindCodePoint(char32_t value, std::uint64_t from = 0) const;
  // Up to count characters from a position on, in the same encoding.
  CText Part(std::uint64_t position, std::uint64_t count) const;
  // Character by character, in the same encoding; in UTF-8 where that has not the other case.
  CText ToUpper() const;
  CText ToLower() const;

  // ---- comparison. Code point by code point; where one side is RAW, byte by byte.

  // -1, 0 or 1; case counts. A text without a byte comes before all others.
  int Compare(const CText& other) const;
  bool Equals(const CText& other) const { return Compare(other) == 0; }
  // By full case folding; nothing is allocated for texts that IsReadInPlace.
  bool EqualsIgnoringCase(const CText& other) const;
  bool StartsWithIgnoringCase(const CText& prefix) const;
  bool EndsWithIgnoringCase(const CText& suffix) const;
  std::uint64_t FindIgnoringCase(
      const CText& wanted) const;  // index of the character, or kNotFound

  // ---- changing

  void Assign(const void* bytes, std::size_t size, std::uint32_t encoding);
  void Append(const void* bytes, std::size_t size, std::uint32_t encoding);
  void Append(const CText& addition);
  void Erase(std::uint64_t position, std::uint64_t count);  // characters
  void Reserve(std::uint64_t characters);
  void Clear() { fImpl.Reset(); }

private:
  CStringImpl& Own();  // the object, made if there is none, copied if it is shared
  bool HasByteCharacters() const { return fImpl && fImpl->HasByteCharacters(); }
  CText FromWide(std::u32string_view wide) const;
  CText MapCharacters(char32_t (*map)(char32_t)) const;

  CUsePtr<CStringImpl> fImpl;
};
