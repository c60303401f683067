#include "Common/VariantTexts.h"

#include <algorithm>

#include "Common/CUnicodeString.h"
#include "Common/EncodingRegistry.h"

CStringPtr MakeText(std::string_view utf8) {
  if (utf8.empty()) return nullptr;
  const bool isAscii = std::all_of(utf8.begin(), utf8.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  return MakeUseCounted<CStringImpl>(utf8, isAscii ? Charset::Ascii : Charset::Utf8);
}

CStringPtr TextOf(Selvane::IUnicodeString* text) {
  const char* const bytes = text ? text->GetBytes() : nullptr;
  if (!bytes || text->GetByteSize() == 0) return nullptr;
  return MakeUseCounted<CStringImpl>(std::string_view(bytes, text->GetByteSize()),
                                     EncodingId(text->GetEncodingName()));
}

Selvane::IUnicodeString* NewUnicodeString(const CStringPtr& text) {
  return new CUnicodeString(CText(text));
}
