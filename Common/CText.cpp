#include "Common/CText.h"

#include <algorithm>

#include "Common/CaseMapping.h"
#include "Common/TextConversion.h"
#include "Common/Utf8.h"

namespace {

// Both sides as they are compared: a RAW text meets the other's bytes, whatever they mean.
struct ComparedViews {
  ComparedViews(const CText& leftText, const CText& rightText) {
    const bool asBytes =
        leftText.Encoding() == Charset::Raw || rightText.Encoding() == Charset::Raw;
    left = ViewOf(leftText, asBytes);
    right = ViewOf(rightText, asBytes);
  }

  static TextView ViewOf(const CText& text, bool asBytes) {
    if (asBytes) return {text.Bytes(), Charset::Raw};
    return text.Impl() ? text.Impl()->View() : TextView{{}, Charset::Ascii};
  }

  TextView left;
  TextView right;
};

}  // namespace

std::string CText::ToNarrow(std::uint32_t encoding) const {
  return fImpl ? fImpl->ToNarrow(encoding) : std::string();
}

char32_t CText::At(std::uint64_t index) const {
  if (HasByteCharacters()) {
    const std::string_view bytes = Bytes();
    return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : U'\0';
  }
  const std::u32string_view wide = Wide();
  return index < wide.size() ? wide[index] : U'\0';
}

static_assert(CText::kNotFound == std::string_view::npos);

std::uint64_t CText::FindCodePoint(char32_t value, std::uint64_t from) const {
  if (HasByteCharacters()) {
    return value < 0x100 ? Bytes().find(static_cast<char>(value), from) : kNotFound;
  }
  return Wide().find(value, from);
}

CText CText::Part(std::uint64_t position, std::uint64_t count) const {
  const std::uint64_t length = Length();
  if (position >= length || count == 0) return CText();
  if (position == 0 && count >= length) return *this;

  if (const auto part = fImpl->PartInPlace(position, count)) return CText(*part, Encoding());
  return FromWide(Wide().substr(position, count));
}

// In this text's encoding, or in UTF-8 where that has not all of it.
CText CText::FromWide(std::u32string_view wide) const {
  if (Encoding() == Charset::Utf32LE) return CText(BytesOfWide(wide), Charset::Utf32LE);
  const auto own = NarrowText(wide, Encoding(), ConversionMode::Exact);
  return own ? CText(*own, Encoding()) : CText(Utf8FromWide(wide));
}

CText CText::MapCharacters(char32_t (*map)(char32_t)) const {
  if (HasByteCharacters() && Encoding() != Charset::Latin1) {
    // Nothing is known of the bytes outside ASCII.
    std::string bytes(Bytes());
    for (char& byte : bytes) {
      const auto value = static_cast<unsigned char>(byte);
      if (value < 0x80) byte = static_cast<char>(map(value));
    }
    return CText(bytes, Encoding());
  }
  std::u32string wide(Wide());
  std::transform(wide.begin(), wide.end(), wide.begin(), map);
  return FromWide(wide);
}

CText CText::ToUpper() const {
  return MapCharacters(&UpperCase);
}

CText CText::ToLower() const {
  return MapCharacters(&LowerCase);
}

int CText::Compare(const CText& other) const {
  // Without a byte, not merely without a character.
  const bool isBare = Bytes().empty();
  if (isBare != other.Bytes().empty()) return isBare ? -1 : 1;

  const ComparedViews views(*this, other);
  return CompareTexts(views.left, views.right);
}

bool CText::EqualsIgnoringCase(const CText& other) const {
  const ComparedViews views(*this, other);
  return EqualIgnoringCase(views.left, views.right);
}

bool CText::StartsWithIgnoringCase(const CText& prefix) const {
  const ComparedViews views(*this, prefix);
  return ::StartsWithIgnoringCase(views.left, views.right);
}

bool CText::EndsWithIgnoringCase(const CText& suffix) const {
  const ComparedViews views(*this, suffix);
  return ::EndsWithIgnoringCase(views.left, views.right);
}

std::uint64_t CText::FindIgnoringCase(const CText& wanted) const {
  const ComparedViews views(*this, wanted);
  return ::FindIgnoringCase(views.left, views.right);
}

void CText::Assign(const void* bytes, std::size_t size, std::uint32_t encoding) {
  if (fImpl && fImpl->UseCount() == 1) {
    fImpl->Assign(bytes, size, encoding);
  } else {
    fImpl = MakeUseCounted<CStringImpl>(std::string_view(static_cast<const char*>(bytes), size),
                                        encoding);
  }
}

void CText::Append(const void* bytes, std::size_t size, std::uint32_t encoding) {
  if (!fImpl) {
    Assign(bytes, size, encoding);
  } else if (size != 0) {
    Own().Append(bytes, size, encoding);
  }
}

void CText::Append(const CText& addition) {
  const CText kept = addition;  // may be this text, which Own would replace
  if (kept.fImpl) Append(kept.Bytes().data(), kept.Bytes().size(), kept.Encoding());
}

void CText::Erase(std::uint64_t position, std::uint64_t count) {
  if (fImpl) Own().Erase(position, count);
}

void CText::Reserve(std::uint64_t characters) {
  Own().Reserve(characters);
}

CStringImpl& CText::Own() {
  if (!fImpl) {
    fImpl = MakeUseCounted<CStringImpl>();
  } else if (fImpl->UseCount() != 1) {
    fImpl = MakeUseCounted<CStringImpl>(fImpl->Bytes(), fImpl->Encoding());
  }
  return *fImpl;
}
