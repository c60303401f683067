#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "json/JsonValue.h"

namespace Tovrin::JSON {

// The nodes without children. None changes once built, apart from the conversion of a JsonReal.

class JsonNull final : public JsonValue {
public:
  JsonNull() : JsonValue(TypeNull) {}
  void ToCompactText(std::string& out) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonTreeReleaser;
  ~JsonNull() override = default;
};

class JsonTrue final : public JsonValue {
public:
  JsonTrue() : JsonValue(TypeTrue) {}
  void ToCompactText(std::string& out) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonTreeReleaser;
  ~JsonTrue() override = default;
};

class JsonFalse final : public JsonValue {
public:
  JsonFalse() : JsonValue(TypeFalse) {}
  void ToCompactText(std::string& out) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonTreeReleaser;
  ~JsonFalse() override = default;
};

// A whole number from -2^63 to 2^64-1.
class JsonInteger final : public JsonValue {
public:
  struct Unsigned {};  // picks the constructor for numbers that may lie above 2^63-1

  explicit JsonInteger(std::int64_t value) : JsonValue(TypeInteger), fValue(value) {}
  JsonInteger(Unsigned, std::uint64_t value)
      : JsonValue(TypeInteger),
        fValue(static_cast<std::int64_t>(value)),
        fIsUnsigned(value > INT64_MAX) {}

  std::int64_t Value() const { return fValue; }
  // The number is above 2^63-1: Value is to be read as unsigned.
  bool IsUnsigned() const { return fIsUnsigned; }

  void ToCompactText(std::string& out) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonTreeReleaser;
  ~JsonInteger() override = default;

  std::int64_t fValue;
  bool fIsUnsigned = false;
};

// A real number: a double, or the text that it was read from, for as long as nobody asks for the
// number. The first question converts it, drops the text for good, and so changes what is printed
// from then on.
class JsonReal final : public JsonValue {
public:
  explicit JsonReal(double value, std::int32_t precision = 0)
      : JsonValue(TypeReal), fPrecision(precision), fValue(value) {}
  // A number that stays text until it is asked for.
  JsonReal(std::string_view text, std::int32_t precision);

  double Value() const;
  // What the number was read from, or empty once it is converted.
  std::string_view Text() const {
    if (fTextSize == 0) return {};
    return {HasTail() ? Tail() : fText, fTextSize};
  }
  // Significant digits of the source, 0 when unknown.
  std::int32_t Precision() const { return fPrecision; }

  void ToCompactText(std::string& out) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonNodeArena;
  friend class JsonTreeReleaser;
  // The text goes into the tail of the node, which begins where the number will stand: behind that
  // many bytes the maker left room for the rest.
  struct InTail {};
  static constexpr std::size_t kTailInNode = sizeof(double);
  JsonReal(InTail, std::string_view text, std::int32_t precision);
  ~JsonReal() override;

  void Keep(double value) const;  // the number takes the place of the text
  const char* Tail() const { return reinterpret_cast<const char*>(&fValue); }

  std::int32_t fPrecision;
  mutable std::uint32_t fTextSize = 0;  // 0: converted, fValue counts
  union {
    mutable double fValue;
    mutable const char* fText;
  };
};

// UTF-8 text.
class JsonString final : public JsonValue {
public:
  // A text that is not known to be valid UTF-8 is checked; one that is not becomes empty, and
  // valid, if given, tells.
  explicit JsonString(std::string_view text, bool isKnownValid = false, bool* valid = nullptr);

  std::string_view Text() const { return {fText, fSize}; }
  using JsonValue::IsPlain;

  void ToCompactText(std::string& out) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonNodeArena;
  friend class JsonTreeReleaser;
  struct InTail {};  // as in JsonReal; the text is not checked
  JsonString(InTail, std::string_view text, bool isPlain);
  ~JsonString() override;

  const char* fText = nullptr;  // owned, unless it is the node's tail
  std::size_t fSize = 0;
};

// A JsonTrue or a JsonFalse.
JsonValue* NewJsonBool(bool value);

}  // namespace Tovrin::JSON
