#include "Common/Punycode.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

#include "Common/TextDetection.h"
#include "Common/Utf8.h"

namespace Punycode {
namespace {

constexpr std::string_view kPrefix = "xn--";
constexpr char kDelimiter = '-';

// RFC 3492, section 5.
constexpr std::uint32_t kBase = 36;
constexpr std::uint32_t kMinThreshold = 1;
constexpr std::uint32_t kMaxThreshold = 26;
constexpr std::uint32_t kSkew = 38;
constexpr std::uint32_t kDamp = 700;
constexpr std::uint32_t kInitialBias = 72;
constexpr std::uint32_t kInitialValue = 128;

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

char ToLower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsAscii(std::string_view text) {
  return FindNonAscii(text.data(), text.size()) == text.size();
}

char DigitOf(std::uint32_t value) {
  return "abcdefghijklmnopqrstuvwxyz0123456789"[value];
}

// kBase when it is no digit.
std::uint32_t ValueOf(char digit) {
  const char letter = ToLower(digit);
  if (letter >= 'a' && letter <= 'z') return static_cast<std::uint32_t>(letter - 'a');
  if (digit >= '0' && digit <= '9') return static_cast<std::uint32_t>(digit - '0') + 26;
  return kBase;
}

// The thresholds of one number's digits, which follow from the numbers before it (section 6.1).
class Bias {
public:
  // Of the digit with that index, counted from the lowest.
  std::uint32_t Threshold(std::uint32_t index) const {
    const std::uint32_t k = (index + 1) * kBase;
    if (k <= fBias + kMinThreshold) return kMinThreshold;
    return std::min(k - fBias, kMaxThreshold);
  }

  // After a number was coded; points is how many code points there are with its own.
  void Adapt(std::uint32_t delta, std::uint32_t points) {
    delta /= fIsFirst ? kDamp : 2;
    fIsFirst = false;
    delta += delta / points;
    std::uint32_t k = 0;
    for (; delta > (kBase - kMinThreshold) * kMaxThreshold / 2; k += kBase) {
      delta /= kBase - kMinThreshold;
    }
    fBias = k + (kBase - kMinThreshold + 1) * delta / (delta + kSkew);
  }

private:
  std::uint32_t fBias = kInitialBias;
  bool fIsFirst = true;
};

// Takes one number from the front of the digits and adds it to sum. False when it does not end, has
// a digit that is none, or does not fit.
bool ReadNumber(std::string_view& digits, const Bias& bias, std::uint32_t& sum) {
  std::uint32_t weight = 1;
  for (std::uint32_t index = 0; !digits.empty(); ++index) {
    const std::uint32_t digit = ValueOf(digits.front());
    digits.remove_prefix(1);
    if (digit == kBase || digit > (kLargest - sum) / weight) return false;
    sum += digit * weight;

    const std::uint32_t threshold = bias.Threshold(index);
    if (digit < threshold) return true;
    if (weight > kLargest / (kBase - threshold)) return false;
    weight *= kBase - threshold;
  }
  return false;
}

void WriteNumber(std::uint32_t number, const Bias& bias, std::string& out) {
  for (std::uint32_t index = 0;; ++index) {
    const std::uint32_t threshold = bias.Threshold(index);
    if (number < threshold) break;
    out += DigitOf(threshold + (number - threshold) % (kBase - threshold));
    number = (number - threshold) / (kBase - threshold);
  }
  out += DigitOf(number);
}

// Inserts the code points that the digits tell of between the basic ones (section 6.2).
bool InsertPoints(std::string_view digits, std::u32string& points) {
  Bias bias;
  std::uint32_t value = kInitialValue;
  std::uint32_t position = 0;
  while (!digits.empty()) {
    const std::uint32_t before = position;
    if (!ReadNumber(digits, bias, position)) return false;
    const auto count = static_cast<std::uint32_t>(points.size()) + 1;
    bias.Adapt(position - before, count);
    if (position / count > kLargest - value) return false;
    value += position / count;
    position %= count;
    if (!IsScalarValue(static_cast<char32_t>(value))) return false;
    points.insert(points.begin() + position, static_cast<char32_t>(value));
    ++position;
  }
  return true;
}

// Writes where the code points beyond the basic ones go (section 6.3). The sums fit: kLongestLabel
// points times the largest of them.
void WritePoints(std::u32string_view points, std::uint32_t handled, std::string& out) {
  static_assert((std::uint64_t{kLongestLabel} + 1) * (kLastCodePoint + 2) <= kLargest);
  Bias bias;
  std::uint32_t value = kInitialValue;
  std::uint32_t delta = 0;
  while (handled < points.size()) {
    std::uint32_t next = kLargest;
    for (const char32_t point : points) {
      if (point >= value) next = std::min(next, static_cast<std::uint32_t>(point));
    }
    delta += (next - value) * (handled + 1);
    value = next;
    for (const char32_t point : points) {
      if (point < value) ++delta;
      if (point != value) continue;
      WriteNumber(delta, bias, out);
      ++handled;
      bias.Adapt(delta, handled);
      delta = 0;
    }
    ++delta;
    ++value;
  }
}

// All code points, or nothing when something is ill-formed.
std::optional<std::u32string> PointsOf(std::string_view text) {
  std::u32string points;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    const char32_t point = DecodeUtf8(at, end);
    if (point == kIllFormed) return std::nullopt;
    points += point;
  }
  return points;
}

template <class Coder>
std::optional<std::string> ForEachLabel(std::string_view host, Coder coder) {
  std::string result;
  while (true) {
    const std::size_t dot = host.find('.');
    const auto label = coder(host.substr(0, dot));
    if (!label) return std::nullopt;
    result += *label;
    if (dot == std::string_view::npos) return result;
    result += '.';
    host.remove_prefix(dot + 1);
  }
}

}  // namespace

bool HasPrefix(std::string_view text) {
  return text.size() >= kPrefix.size() &&
         std::equal(kPrefix.begin(), kPrefix.end(), text.begin(),
                    [](char wanted, char found) { return wanted == ToLower(found); });
}

std::optional<std::string> DecodeLabel(std::string_view label) {
  if (!HasPrefix(label)) return std::string(label);
  if (label.size() > kLongestLabel) return std::nullopt;

  // Contract: a delimiter right behind the prefix is taken off, although nothing stands before it.
  std::string_view basic;
  std::string_view digits = label.substr(kPrefix.size());
  if (const std::size_t delimiter = digits.rfind(kDelimiter); delimiter != digits.npos) {
    basic = digits.substr(0, delimiter);
    digits.remove_prefix(delimiter + 1);
  }
  if (!IsAscii(basic)) return std::nullopt;

  std::u32string points(basic.begin(), basic.end());
  if (!InsertPoints(digits, points)) return std::nullopt;
  return Utf8FromWide(points);
}

std::optional<std::string> EncodeLabel(std::string_view label) {
  if (IsAscii(label)) return std::string(label);
  if (label.size() > kLongestLabel) return std::nullopt;
  const auto points = PointsOf(label);
  if (!points) return std::nullopt;

  std::string encoded(kPrefix);
  std::copy_if(label.begin(), label.end(), std::back_inserter(encoded),
               [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
  const auto basicCount = static_cast<std::uint32_t>(encoded.size() - kPrefix.size());
  if (basicCount > 0) encoded += kDelimiter;
  WritePoints(*points, basicCount, encoded);
  if (encoded.size() > kLongestLabel) return std::nullopt;
  return encoded;
}

std::optional<std::string> DecodeHost(std::string_view host) {
  return ForEachLabel(host, DecodeLabel);
}

std::optional<std::string> EncodeHost(std::string_view host) {
  return ForEachLabel(host, EncodeLabel);
}

}  // namespace Punycode
