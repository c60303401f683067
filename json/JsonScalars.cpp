#include "json/JsonScalars.h"

#include <cstring>
#include <limits>
#include <utility>

#include "json/JsonParser.h"

namespace Tovrin::JSON {

namespace {

const char* CopyOf(std::string_view text) {
  char* copy = new char[text.size()];
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  return copy;
}

// Copies the text behind the node, where its maker left room.
const char* CopyIntoTail(JsonString* node, std::string_view text) {
  char* tail = reinterpret_cast<char*>(node) + sizeof(JsonString);
  if (!text.empty()) std::memcpy(tail, text.data(), text.size());
  return tail;
}

}  // namespace

JsonReal::JsonReal(std::string_view text, std::int32_t precision)
    : JsonValue(TypeReal), fPrecision(precision), fValue(0.0) {
  // A text whose length does not fit is no number that anyone prints as it is.
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
    fValue = ParseReal(text);
  } else if (!text.empty()) {
    fText = CopyOf(text);
    fTextSize = static_cast<std::uint32_t>(text.size());
  }
}

JsonReal::JsonReal(InTail, std::string_view text, std::int32_t precision)
    : JsonValue(TypeReal),
      fPrecision(precision),
      fTextSize(static_cast<std::uint32_t>(text.size())),
      fValue(0.0) {
  std::memcpy(reinterpret_cast<char*>(this) + sizeof(JsonReal) - kTailInNode, text.data(),
              text.size());
}

JsonReal::~JsonReal() {
  if (fTextSize != 0 && !HasTail()) delete[] fText;
}

double JsonReal::Value() const {
  if (fTextSize != 0) Keep(ParseReal(Text()));
  return fValue;
}

void JsonReal::Keep(double value) const {
  if (!HasTail()) delete[] fText;
  SetHasTail(false);
  fTextSize = 0;
  fValue = value;
}

JsonString::JsonString(std::string_view text, bool isKnownValid, bool* valid)
    : JsonValue(TypeString) {
  const bool isValid = isKnownValid || IsValidUtf8(text);
  if (valid) *valid = isValid;
  if (!isValid || text.empty()) return;
  fText = CopyOf(text);
  fSize = text.size();
}

JsonString::JsonString(InTail, std::string_view text, bool isPlain)
    : JsonValue(TypeString), fText(CopyIntoTail(this, text)), fSize(text.size()) {
  SetPlain(isPlain);
}

JsonString::~JsonString() {
  if (!HasTail()) delete[] fText;
}

JsonValue* NewJsonBool(bool value) {
  if (value) return new JsonTrue;
  return new JsonFalse;
}

}  // namespace Tovrin::JSON
