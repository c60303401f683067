#include "json/JsonNumber.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "Libs/Platform/ClassicLocale.h"
#include "json/JsonParser.h"
#include "json/JsonTextScan.h"

namespace Tovrin::JSON {

namespace {

// Takes a number apart without making anything of it.
class NumberScanner {
public:
  explicit NumberScanner(std::string_view text)
      : fBegin(text.data()), fAt(text.data()), fEnd(text.data() + text.size()) {}

  // Null, or why there is no number.
  const char* Scan() {
    if (fAt == fEnd) return "unexpected end of input";
    isNegative = *fAt == '-';
    if (isNegative) ++fAt;
    if (!AtDigit()) return "not a number";
    ScanWhole();
    if (fAt != fEnd && *fAt == '.') {
      ++fAt;
      isReal = true;
      fractionDigits = ScanDigits();
      if (fractionDigits == 0) return "minimum one digit after decimal dot required";
      digits += fractionDigits;
    }
    if (fAt != fEnd && (*fAt == 'e' || *fAt == 'E')) {
      ++fAt;
      isReal = true;
      if (fAt != fEnd && (*fAt == '+' || *fAt == '-')) ++fAt;
      exponentDigits = ScanDigits();
      if (exponentDigits == 0) return "minimum one digit after exponent required";
    }
    return nullptr;
  }

  std::string_view Text() const { return {fBegin, fAt}; }

  bool isNegative = false;
  bool isReal = false;
  std::uint64_t magnitude = 0;  // the whole digits, as far as they fit
  std::uint64_t digits = 0;     // significant ones: those of the magnitude and of the fraction
  std::uint64_t fractionDigits = 0;
  std::uint64_t exponentDigits = 0;

private:
  bool AtDigit() const { return fAt != fEnd && IsDigit(*fAt); }

  std::uint64_t ScanDigits() {
    const char* begin = fAt;
    fAt = SkipDigits(fAt, fEnd);
    return static_cast<std::uint64_t>(fAt - begin);
  }
  // A leading zero stands alone. A digit that would take the magnitude past 64 bits is read over,
  // and makes the number a real one; a smaller digit behind it may still be added.
  void ScanWhole() {
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    if (*fAt == '0') {
      ++fAt;
      digits = 1;
      return;
    }
    for (; AtDigit(); ++fAt) {
      const auto digit = static_cast<std::uint64_t>(*fAt - '0');
      if (magnitude > kMax / 10 || (magnitude == kMax / 10 && digit > kMax % 10)) {
        isReal = true;
        continue;
      }
      magnitude = magnitude * 10 + digit;
      ++digits;
    }
  }

  const char* fBegin;
  const char* fAt;
  const char* fEnd;
};

// Texts of this kind are converted at once, since they may lie out of range or print better so.
constexpr bool IsUnusual(std::uint64_t fractionDigits, std::uint64_t exponentDigits) {
  return exponentDigits >= 2 || fractionDigits > 17;
}

double ConvertedByTheLibrary(std::string_view text) {
  const std::string terminated(text);
  const ClassicLocaleScope classic;
  errno = 0;
  const double value = std::strtod(terminated.c_str(), nullptr);
  const int error = errno;
  if (error == ERANGE && (value == 0.0 || std::isinf(value))) {
    return std::numeric_limits<double>::infinity();
  }
  return value;
}

// Steps over the digits, and tells how many there were.
std::uint64_t StepOverDigits(const char*& at, const char* end) {
  const char* begin = at;
  at = SkipDigits(at, end);
  return static_cast<std::uint64_t>(at - begin);
}

}  // namespace

const char* FindPlainNumberEnd(const char* at, const char* end) {
  constexpr std::uint64_t kMaxWholeDigits = 14;
  const char* const begin = at;
  if (at != end && *at == '-') ++at;
  const char* const whole = at;
  const std::uint64_t wholeDigits = StepOverDigits(at, end);
  if (wholeDigits == 0 || (wholeDigits > 1 && *whole == '0')) return nullptr;

  bool isReal = false;
  std::uint64_t fractionDigits = 0, exponentDigits = 0;
  if (at != end && *at == '.') {
    isReal = true;
    fractionDigits = StepOverDigits(++at, end);
    if (fractionDigits == 0) return nullptr;
  }
  if (at != end && (*at == 'e' || *at == 'E')) {
    isReal = true;
    if (++at != end && (*at == '+' || *at == '-')) ++at;
    exponentDigits = StepOverDigits(at, end);
    if (exponentDigits == 0) return nullptr;
  }
  if (isReal) return IsUnusual(fractionDigits, exponentDigits) ? nullptr : at;
  const bool isMinusZero = begin != whole && *whole == '0';
  return isMinusZero || wholeDigits > kMaxWholeDigits ? nullptr : at;
}

double ParseReal(std::string_view text) {
  // Perf: from_chars reads decimal numbers several times as fast (bench/json, MsgPack writing).
  // Where it gives an ordinary number for the whole text, both round to the same one; all else
  // (nothing read, blanks, hexadecimal, words, out of range) is strtod's to say.
  const char* end = text.data() + text.size();
  double value = 0.0;
  const auto [stopped, error] = std::from_chars(text.data(), end, value);
  if (error == std::errc() && stopped == end && std::isnormal(value)) return value;
  return ConvertedByTheLibrary(text);
}

JsonValue* ReadNumber(std::string_view text, JsonNodeArena& arena, std::size_t& size,
                      const char*& error) {
  NumberScanner number(text);
  error = number.Scan();
  if (error) return nullptr;
  size = number.Text().size();

  // Contract: -9223372036854775808 has a sign and does not fit into 63 bits, so it is a real.
  constexpr std::uint64_t kMaxSigned = std::numeric_limits<std::int64_t>::max();
  if (!number.isReal && !number.isNegative) {
    return arena.New<JsonInteger>(JsonInteger::Unsigned{}, number.magnitude);
  }
  if (!number.isReal && number.magnitude <= kMaxSigned) {
    return arena.New<JsonInteger>(-static_cast<std::int64_t>(number.magnitude));
  }

  const auto precision = static_cast<std::int32_t>(
      std::min<std::uint64_t>(number.digits, std::numeric_limits<std::int32_t>::max()));
  if (!IsUnusual(number.fractionDigits, number.exponentDigits)) {
    return arena.NewReal(number.Text(), precision);
  }
  const double value = ParseReal(number.Text());
  if (value == std::numeric_limits<double>::infinity()) {
    error = "real number out of double range";
    return nullptr;
  }
  return arena.New<JsonReal>(value, precision);
}

JsonValue* ReadNumber(const std::string& text, JsonParseContext& context) {
  const std::uint64_t begin = std::min<std::uint64_t>(context.Position, text.size());
  JsonNodeArena arena;
  std::size_t size = 0;
  const char* error = nullptr;
  JsonValue* value = ReadNumber(std::string_view(text).substr(begin), arena, size, error);
  if (value) {
    context.Position = begin + size;
  } else {
    context.ErrorMessage = error;
  }
  return value;
}

}  // namespace Tovrin::JSON
