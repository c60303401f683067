#include <cstdint>
#include <limits>

#include "Common/CUseCounted.h"
#include "json/JsonParser.h"
#include "json/JsonScalars.h"

namespace Tovrin::JSON {

namespace {

// The bounds are the doubles nearest to -2^63 and 2^63-1, both included.
bool TruncatedToInt64(double value, std::int64_t& out) {
  constexpr double kBound = 9223372036854775808.0;
  out = 0;
  if (!(value >= -kBound && value <= kBound)) return false;  // a NaN, too
  // Contract: 2^63 is the nearest to 2^63-1 and counts as in range; what it truncates to is what
  // the processor's own conversion gives.
  out =
      value == kBound ? std::numeric_limits<std::int64_t>::min() : static_cast<std::int64_t>(value);
  return true;
}

double ToDouble(const JsonInteger& integer) {
  return integer.IsUnsigned() ? static_cast<double>(static_cast<std::uint64_t>(integer.Value()))
                              : static_cast<double>(integer.Value());
}

// The number that a string begins with, or none. Contract: what follows it is not looked at.
CUsePtr<JsonValue> NumberIn(const JsonString& string) {
  JsonParseContext context;
  return CUsePtr<JsonValue>(ReadNumber(std::string(string.Text()), context));
}

template <class Narrow>
bool Narrowed(const JsonValue& value, Narrow& out) {
  std::int64_t wide = 0;
  out = 0;
  if (!value.AsInt64(wide)) return false;
  if (wide < std::int64_t{std::numeric_limits<Narrow>::min()} ||
      wide > std::int64_t{std::numeric_limits<Narrow>::max()}) {
    return false;
  }
  out = static_cast<Narrow>(wide);
  return true;
}

}  // namespace

bool JsonValue::AsBool(bool& out) const {
  out = false;
  switch (GetType()) {
    case TypeString:
      out = !static_cast<const JsonString*>(this)->Text().empty();
      return true;
    case TypeInteger: {
      const auto* integer = static_cast<const JsonInteger*>(this);
      out = integer->Value() != 0 || integer->IsUnsigned();
      return true;
    }
    case TypeReal:
      out = static_cast<const JsonReal*>(this)->Value() != 0.0;
      return true;
    case TypeTrue:
      out = true;
      return true;
    case TypeFalse:
      return true;
    default:
      return false;
  }
}

bool JsonValue::AsInt64(std::int64_t& out) const {
  out = 0;
  switch (GetType()) {
    case TypeString: {
      const auto number = NumberIn(*static_cast<const JsonString*>(this));
      return number && number->AsInt64(out);
    }
    case TypeInteger: {
      const auto* integer = static_cast<const JsonInteger*>(this);
      if (integer->IsUnsigned()) return false;
      out = integer->Value();
      return true;
    }
    case TypeReal:
      return TruncatedToInt64(static_cast<const JsonReal*>(this)->Value(), out);
    case TypeTrue:
      out = 1;
      return true;
    case TypeFalse:
      return true;
    default:
      return false;
  }
}

bool JsonValue::AsUInt64(std::uint64_t& out) const {
  std::int64_t number = 0;
  out = 0;
  if (!AsInt64(number) || number < 0) return false;
  out = static_cast<std::uint64_t>(number);
  return true;
}

bool JsonValue::AsInt(std::int32_t& out) const {
  return Narrowed(*this, out);
}

bool JsonValue::AsUInt(std::uint32_t& out) const {
  return Narrowed(*this, out);
}

bool JsonValue::AsDouble(double& out) const {
  out = 0.0;
  switch (GetType()) {
    case TypeString: {
      const auto number = NumberIn(*static_cast<const JsonString*>(this));
      return number && number->AsDouble(out);
    }
    case TypeInteger:
      out = ToDouble(*static_cast<const JsonInteger*>(this));
      return true;
    case TypeReal:
      out = static_cast<const JsonReal*>(this)->Value();
      return true;
    case TypeTrue:
      out = 1.0;
      return true;
    case TypeFalse:
      return true;
    default:
      return false;
  }
}

bool JsonValue::AsString(std::string& out) const {
  out.clear();
  if (GetType() == TypeString) {
    out = static_cast<const JsonString*>(this)->Text();
  } else {
    ToCompactText(out);
  }
  return true;
}

}  // namespace Tovrin::JSON
