#include "Common/TextCompare.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "Common/CaseMapping.h"
#include "Common/EncodingRegistry.h"
#include "Common/Utf8.h"

namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080;
constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr char32_t kEnd = kIllFormed;  // no code point: a reader has nothing left

std::uint64_t LoadWord(const char* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

unsigned char ByteAt(const char* at) {
  return static_cast<unsigned char>(*at);
}

// Lower-cases eight 7-bit bytes: no sum leaves its byte, and the high bit of each says whether the
// byte lies between "A" and "Z".
std::uint64_t FoldWord(std::uint64_t word) {
  const std::uint64_t fromA = word + kOnes * (0x80 - 'A');
  const std::uint64_t beyondZ = word + kOnes * (0x80 - 'Z' - 1);
  return word | ((fromA & ~beyondZ & kHighBits) >> 2);
}

bool HasAsciiBytes(std::uint32_t encoding) {
  return encoding != Charset::Utf32LE;
}

// Bytes from the beginning in which both are 7-bit and equal but for case. The first other byte,
// of either kind, ends it; in UTF-8 no sequence is cut.
// Perf: three words a step, so that the test is paid once in 24 bytes; TextCompareBench.
std::size_t CommonAsciiPrefix(std::string_view left, std::string_view right) {
  const std::size_t size = std::min(left.size(), right.size());
  std::size_t pos = 0;
  const auto differ = [&](std::size_t at) {
    const std::uint64_t l = LoadWord(left.data() + at);
    const std::uint64_t r = LoadWord(right.data() + at);
    // With a high bit set the folded words mean nothing, and need not.
    return (FoldWord(l) ^ FoldWord(r)) | ((l | r) & kHighBits);
  };
  while (pos + 24 <= size && !(differ(pos) | differ(pos + 8) | differ(pos + 16))) pos += 24;
  while (pos + 8 <= size && !differ(pos)) pos += 8;
  const auto isSame = [&](std::size_t at) {
    const unsigned char l = ByteAt(left.data() + at);
    const unsigned char r = ByteAt(right.data() + at);
    return l < 0x80 && r < 0x80 && FoldAscii(l) == FoldAscii(r);
  };
  while (pos < size && isSame(pos)) ++pos;
  return pos;
}

bool IsAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

// Gives the code points of a text one by one, then kEnd. Bytes of a RAW text come as they are.
class CodePointReader {
public:
  explicit CodePointReader(TextView text)
      : fAt(text.bytes.data()), fEnd(fAt + text.bytes.size()), fEncoding(text.encoding) {
    if (fEncoding == Charset::Utf32LE) fEnd -= text.bytes.size() % sizeof(char32_t);
  }

  char32_t Next() {
    while (fAt != fEnd) {
      const char32_t value = Take();
      if (value != kIllFormed) return value;
    }
    return kEnd;
  }

private:
  // kIllFormed for what is to be passed over.
  char32_t Take() {
    if (fEncoding == Charset::Utf32LE) {
      char32_t value;
      std::memcpy(&value, fAt, sizeof value);
      fAt += sizeof value;
      return IsScalarValue(value) ? value : kIllFormed;
    }
    if (fEncoding == Charset::Utf8) return DecodeUtf8(fAt, fEnd);
    const unsigned char byte = ByteAt(fAt++);
    return byte >= 0x80 && fEncoding == Charset::Ascii ? kIllFormed : byte;
  }

  const char* fAt;
  const char* fEnd;
  std::uint32_t fEncoding;
};

// Gives the folded code points of a text one by one, then kEnd.
class FoldedReader {
public:
  explicit FoldedReader(TextView text) : fCodePoints(text), fIsRaw(text.encoding == Charset::Raw) {}

  char32_t Next() {
    if (fTaken == fFolded.count) {
      const char32_t value = fCodePoints.Next();
      ++fRead;
      if (value == kEnd) return kEnd;
      if (value < 0x80) return FoldAscii(value);
      if (fIsRaw) return value;
      fFolded = FoldCase(value);
      fTaken = 0;
    }
    return fFolded.values[fTaken++];
  }

  // Index of the code point that the last folded one came from.
  std::uint64_t Index() const { return fRead - 1; }

private:
  CodePointReader fCodePoints;
  bool fIsRaw;
  FoldedCase fFolded{};      // of the code point read last, when it is not 7-bit
  std::uint32_t fTaken = 0;  // given out of fFolded
  std::uint64_t fRead = 0;   // code points read
};

std::uint64_t CountFolded(TextView text) {
  std::uint64_t count = 0;
  for (FoldedReader reader(text); reader.Next() != kEnd;) ++count;
  return count;
}

// Where one side is RAW, both are.
void Align(TextView& left, TextView& right) {
  if (left.encoding == Charset::Raw || right.encoding == Charset::Raw) {
    left.encoding = right.encoding = Charset::Raw;
  }
}

// Takes off what both begin with, as far as plain bytes tell.
void DropCommonAscii(TextView& left, TextView& right) {
  if (!HasAsciiBytes(left.encoding) || !HasAsciiBytes(right.encoding)) return;
  const std::size_t common = CommonAsciiPrefix(left.bytes, right.bytes);
  left.bytes.remove_prefix(common);
  right.bytes.remove_prefix(common);
}

// What is left to be compared begins with two different 7-bit characters.
bool BeginsDifferently(TextView left, TextView right) {
  return HasAsciiBytes(left.encoding) && HasAsciiBytes(right.encoding) && !left.bytes.empty() &&
         !right.bytes.empty() && ByteAt(left.bytes.data()) < 0x80 &&
         ByteAt(right.bytes.data()) < 0x80;
}

bool StartsWith(FoldedReader text, FoldedReader prefix) {
  while (true) {
    const char32_t wanted = prefix.Next();
    if (wanted == kEnd) return true;
    if (wanted != text.Next()) return false;
  }
}

// Folded code points as the digits of one number, modulo a prime. The number of a window follows it
// through a text in constant room and time, and tells where looking closer is worth while: the
// search of Rabin and Karp.
class RowNumber {
public:
  void Append(char32_t digit) { fValue = Reduce(fValue * fBase + digit); }
  // Appends a digit to a row of that length, and takes its first one away.
  void Slide(char32_t first, const RowNumber& length, char32_t digit) {
    fValue = Reduce(fValue * fBase + digit + first * (kPrime - length.fValue));
  }
  // What stands for a length in Slide: the base to that power.
  static RowNumber One() {
    RowNumber one;
    one.fValue = 1;
    return one;
  }
  void Lengthen() { Append(0); }

  bool operator==(const RowNumber& other) const { return fValue == other.fValue; }

private:
  static constexpr std::uint64_t kPrime = (std::uint64_t{1} << 31) - 1;

  // Less than the prime, for any sum of two products.
  static std::uint64_t Reduce(std::uint64_t value) {
    value = (value & kPrime) + (value >> 31);
    value = (value & kPrime) + (value >> 31);
    return value >= kPrime ? value - kPrime : value;
  }
  // Nobody can know it and write a text full of false alarms.
  static std::uint64_t Base() {
    static const auto base =
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return base % (kPrime - 0x200000) + 0x200000;  // above every digit
  }

  std::uint64_t fBase = Base();
  std::uint64_t fValue = 0;
};

}  // namespace

bool IsReadInPlace(std::uint32_t encoding) {
  return encoding <= Charset::Utf32LE || encoding == Charset::Raw;
}

int CompareTexts(TextView left, TextView right) {
  Align(left, right);
  if (left.encoding == right.encoding && left.encoding != Charset::Utf32LE) {
    // Bytes of UTF-8 are in the order of the code points.
    const int order = left.bytes.compare(right.bytes);
    return order < 0 ? -1 : order > 0;
  }
  CodePointReader leftReader(left);
  CodePointReader rightReader(right);
  while (true) {
    const char32_t l = leftReader.Next();
    const char32_t r = rightReader.Next();
    if (l == r) {
      if (l == kEnd) return 0;
      continue;
    }
    if (l == kEnd) return -1;
    return r == kEnd || l > r ? 1 : -1;
  }
}

bool EqualIgnoringCase(TextView left, TextView right) {
  Align(left, right);
  DropCommonAscii(left, right);
  if (BeginsDifferently(left, right)) return false;
  FoldedReader leftReader(left);
  FoldedReader rightReader(right);
  while (true) {
    const char32_t l = leftReader.Next();
    if (l != rightReader.Next()) return false;
    if (l == kEnd) return true;
  }
}

bool StartsWithIgnoringCase(TextView text, TextView prefix) {
  Align(text, prefix);
  DropCommonAscii(text, prefix);
  if (BeginsDifferently(text, prefix)) return false;
  return StartsWith(FoldedReader(text), FoldedReader(prefix));
}

bool EndsWithIgnoringCase(TextView text, TextView suffix) {
  Align(text, suffix);
  if (HasAsciiBytes(text.encoding) && HasAsciiBytes(suffix.encoding) &&
      text.bytes.size() >= suffix.bytes.size() && IsAscii(suffix.bytes)) {
    const std::string_view end = text.bytes.substr(text.bytes.size() - suffix.bytes.size());
    if (CommonAsciiPrefix(end, suffix.bytes) == end.size()) return true;
    if (IsAscii(end)) return false;
  }

  // A text is read forwards alone: skip what it has more than the suffix.
  const std::uint64_t textCount = CountFolded(text);
  const std::uint64_t suffixCount = CountFolded(suffix);
  if (textCount < suffixCount) return false;
  FoldedReader textReader(text);
  for (std::uint64_t i = suffixCount; i < textCount; ++i) textReader.Next();
  FoldedReader suffixReader(suffix);
  for (std::uint64_t i = 0; i < suffixCount; ++i) {
    if (textReader.Next() != suffixReader.Next()) return false;
  }
  return true;
}

std::uint64_t FindIgnoringCase(TextView text, TextView wanted) {
  Align(text, wanted);
  RowNumber wantedNumber;
  RowNumber length = RowNumber::One();
  std::uint64_t size = 0;  // folded code points of what is looked for
  FoldedReader wantedReader(wanted);
  for (char32_t value = wantedReader.Next(); value != kEnd; value = wantedReader.Next()) {
    wantedNumber.Append(value);
    length.Lengthen();
    ++size;
  }
  if (size == 0) return 0;

  // The window lies between two readers.
  FoldedReader front(text);
  FoldedReader back(text);
  RowNumber window;
  for (std::uint64_t i = 0; i < size; ++i) {
    const char32_t value = front.Next();
    if (value == kEnd) return kTextNotFound;
    window.Append(value);
  }
  while (window != wantedNumber || !StartsWith(back, FoldedReader(wanted))) {
    const char32_t value = front.Next();
    if (value == kEnd) return kTextNotFound;
    window.Slide(back.Next(), length, value);
  }
  back.Next();
  return back.Index();
}
