// Fuzz target for the text layer: detection, conversion, folding and lines. The first two bytes
// pick the encoding and the line style, the rest is the text.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "Common/CText.h"
#include "Common/TextConversion.h"
#include "Common/TextDetection.h"
#include "Common/TextLines.h"
#include "Common/Utf8.h"
#include "fuzz/Require.h"

namespace {

void CheckDetection(std::string_view bytes) {
  const int detected = DetectEncoding(bytes.data(), bytes.size());
  const bool isPlain = FindZeroOrNonAscii(bytes.data(), bytes.size()) == bytes.size();
  Require((detected == 0) == isPlain, "0 stands for plain text alone");
  if (detected == 1) Require(IsValidUtf8(bytes.data(), bytes.size()), "1 stands for UTF-8");
  if (detected == 2) Require(IsGb18030(bytes.data(), bytes.size()), "2 stands for GB18030");
}

void CheckConversion(std::string_view bytes, std::uint32_t encoding) {
  const CText text(bytes, encoding);
  const std::u32string wide(text.Wide());
  const std::string utf8(text.Utf8());
  Require(text.Bytes().data()[text.Bytes().size()] == '\0', "a zero byte closes the bytes");
  Require(text.Utf8().data()[utf8.size()] == '\0', "a zero byte closes the UTF-8 form");
  if (!IsKnownEncoding(encoding)) return;

  Require(CountUtf8(utf8) == WideFromUtf8(utf8).size(), "counting is decoding");
  if (encoding != Charset::Utf8)
    Require(WideFromUtf8(utf8) == WideFromUtf8(Utf8FromWide(wide)),
            "the two forms hold the same characters");
  const auto exact = ConvertText(bytes, encoding, Charset::Utf8, ConversionMode::Exact);
  if (exact && encoding < Charset::FirstRegistered) {
    const auto back = ConvertText(*exact, Charset::Utf8, encoding, ConversionMode::Exact);
    Require(back.has_value(), "what was read exactly can be written");
    Require(ConvertText(*back, encoding, Charset::Utf8) == exact, "and reads the same");
  }
}

void CheckComparison(std::string_view bytes, std::uint32_t encoding) {
  const CText whole(bytes, encoding);
  const CText front(bytes.substr(0, bytes.size() / 2), encoding);
  Require(whole.Equals(whole), "a text equals itself");
  Require(whole.EqualsIgnoringCase(whole), "without regard to case, too");
  Require(whole.Compare(front) == -front.Compare(whole), "the order has two sides");
  Require(whole.FindIgnoringCase(whole) == 0, "a text is found in itself");
  Require((whole.FindIgnoringCase(front) == 0) || !whole.StartsWithIgnoringCase(front),
          "what it starts with is found in front");
  if (whole.EndsWithIgnoringCase(front)) {
    Require(whole.FindIgnoringCase(front) != CText::kNotFound, "what it ends with is found");
  }
}

void CheckLines(std::string_view bytes, std::uint32_t encoding, int style) {
  while (!bytes.empty()) {
    CText line;
    char endAtData = 7;
    const std::size_t taken =
        ExtractLine(line, bytes.data(), bytes.size(), encoding, style, &endAtData);
    Require(endAtData == 0 || endAtData == 1, "the flag is written");
    Require(taken <= bytes.size(), "no line is longer than the data");
    if (endAtData) Require(taken == bytes.size(), "the flag is for an end at the end");
    if (taken == 0) {
      Require(line.Impl() == nullptr, "no line, no text");
      break;
    }
    if (encoding != Charset::Utf32LE) {
      Require(line.Bytes() == bytes.substr(0, line.Bytes().size()), "a line is in front");
      Require(line.Bytes().size() < taken, "an end has at least one byte");
    }
    bytes.remove_prefix(taken);
  }
}

void CheckChanges(std::string_view bytes, std::uint32_t encoding) {
  CText text(bytes, encoding);
  const CText before = text;
  const CText addition(bytes, Charset::Utf8);
  text.Append(addition);
  if (IsKnownEncoding(encoding)) {
    Require(CountUtf8(text.Utf8()) >= CountUtf8(before.Utf8()), "an addition takes nothing away");
  }
  text.Erase(text.Length() / 3, text.Length() / 2);
  text.Append(text);
  text.Reserve(text.Length() + 10);
  Require(before.Bytes() == CText(bytes, encoding).Bytes(), "a copy keeps what it was");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 16 * 1024) return 0;  // longer inputs reach no new code

  // Encodings that only iconv knows: with shift states, with a mark, of other orders, and none.
  static constexpr const char* kRegistered[] = {
      "ISO-2022-JP", "UNICODE", "SHIFT_JIS", "UTF-7", "UCS-4", "windows-1258", "no such encoding"};
  const std::size_t choice = data[0] % (Charset::FirstRegistered + std::size(kRegistered));
  const std::uint32_t encoding = choice < Charset::FirstRegistered
                                     ? static_cast<std::uint32_t>(choice)
                                     : EncodingId(kRegistered[choice - Charset::FirstRegistered]);
  const int style = data[1] % 4;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  CheckDetection(bytes);
  CheckConversion(bytes, encoding);
  CheckComparison(bytes, encoding);
  CheckLines(bytes, encoding, style);
  CheckChanges(bytes, encoding);
  return 0;
}
