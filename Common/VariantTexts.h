#pragma once

#include <cstdint>
#include <string_view>

#include "Common/CStringImpl.h"
#include "Common/CUseCounted.h"

// Text as a variant keeps it: a counted handle, null for the empty text.

namespace Selvane {
class IUnicodeString;
}  // namespace Selvane

using CStringPtr = CUsePtr<CStringImpl>;

// A handle on new text in UTF-8, or none for no bytes.
CStringPtr MakeText(std::string_view utf8);

// What an interface holds. A foreign text is copied, in its encoding; null gives no handle.
CStringPtr TextOf(Selvane::IUnicodeString* text);

// A new object around the same text; the caller owns the reference.
Selvane::IUnicodeString* NewUnicodeString(const CStringPtr& text);

// Order by code point; no handle equals the empty text.
inline int CompareHandles(const CStringImpl* left, const CStringImpl* right) {
  if (left == right) return 0;
  constexpr TextView kEmpty{{}, Charset::Ascii};
  return CompareTexts(left ? left->View() : kEmpty, right ? right->View() : kEmpty);
}

inline std::string_view Utf8Of(const CStringImpl* text) {
  return text ? text->Utf8() : std::string_view();
}
