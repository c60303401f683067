#include "Common/TextLines.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_view_literals;

namespace {

// What the environment of this run says; only "no" and "yes" in some spelling are in use here.
bool IsYes(const char* name) {
  const char* value = std::getenv(name);
  return value && (*value == 'y' || *value == 'Y');
}

bool IsLazyDisabledHere() {
  return IsYes("QRX_DISABLE_LAZY_EOL_STYLE");
}

struct Answer {
  std::string text;
  std::size_t taken;
  int endAtData;
  bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* out) {
  *out << testing::PrintToString(answer.text) << ", " << answer.taken << ", " << answer.endAtData;
}

Answer Extract(std::string_view data, int style) {
  CText line("what stood here before");
  char endAtData = 7;
  const std::vector<char> exact(data.begin(), data.end());  // no byte behind the data
  const std::size_t taken =
      ExtractLine(line, exact.data(), exact.size(), Charset::Utf8, style, &endAtData);
  return {std::string(line.Utf8()), taken, endAtData};
}

struct Row {
  std::string_view data;
  Answer strict, lazy, firstOfEither;
};

const Answer kNone{"", 0, 0};

const Row kRows[] = {
    {"", kNone, kNone, kNone},
    {"a", kNone, kNone, kNone},
    {"a\n", kNone, {"a", 2, 1}, {"a", 2, 1}},
    {"a\r\n", {"a", 3, 0}, {"a", 3, 0}, {"a", 3, 0}},
    {"a\r\r\n", {"a\r", 4, 0}, {"a", 4, 0}, {"a", 4, 0}},
    {"a\n\r\rb", kNone, {"a", 4, 0}, {"a", 4, 0}},
    {"a\r", kNone, kNone, {"a", 2, 1}},
    {"a\r\r", kNone, kNone, {"a", 2, 0}},
    {"a\rb\n", kNone, {"a\rb", 4, 1}, {"a", 2, 0}},
    {"a\r\rb\n", kNone, {"a\r\rb", 5, 1}, {"a", 2, 0}},
    {"a\nb\r\n", {"a\nb", 5, 0}, {"a", 2, 0}, {"a", 2, 0}},
    {"a\n\r", kNone, {"a", 3, 1}, {"a", 3, 1}},
    {"a\n\r\n", {"a\n", 4, 0}, {"a", 3, 0}, {"a", 3, 0}},
    {"a\n\n", kNone, {"a", 2, 0}, {"a", 2, 0}},
    {"\n", kNone, {"", 1, 1}, {"", 1, 1}},
    {"\r\n", {"", 2, 0}, {"", 2, 0}, {"", 2, 0}},
    {"\r", kNone, kNone, {"", 1, 1}},
    {"\n\r", kNone, {"", 2, 1}, {"", 2, 1}},
    {"a\nb", kNone, {"a", 2, 0}, {"a", 2, 0}},
    {"a\r\nb\r\n", {"a", 3, 0}, {"a", 3, 0}, {"a", 3, 0}},
    {"a\0b\n"sv, kNone, {std::string("a\0b", 3), 4, 1}, {std::string("a\0b", 3), 4, 1}},
};

TEST(ExtractLine, FindsTheEndByItsStyle) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.data));
    EXPECT_EQ(Extract(row.data, kLineEndStrict), row.strict);
    for (const int lazy : {1, 3, -1, 99}) {
      EXPECT_EQ(Extract(row.data, lazy), IsLazyDisabledHere() ? row.strict : row.lazy) << lazy;
    }
    EXPECT_EQ(Extract(row.data, kLineEndFirstOfEither), row.firstOfEither);
  }
}

// The oracle: the rule of the third style as it is told, which looks for the line feed first.
Answer SlowFirstOfEither(std::string_view data) {
  const std::size_t feed = data.find('\n');
  const std::size_t carriage = data.substr(0, feed).find('\r');
  std::size_t end = carriage;
  char companion = '\n';
  if (feed != std::string_view::npos &&
      (carriage == std::string_view::npos ||
       data.substr(carriage, feed - carriage).find_first_not_of('\r') == std::string_view::npos)) {
    end = feed;
    companion = '\r';
  }
  if (end == std::string_view::npos) return kNone;

  std::size_t lineSize = end;
  while (lineSize > 0 && data[lineSize - 1] == companion) --lineSize;
  std::size_t taken = end + 1;
  if (lineSize == end) {
    while (taken < data.size() && data[taken] == companion) ++taken;
  }
  return {std::string(data.substr(0, lineSize)), taken, lineSize == end && taken == data.size()};
}

TEST(ExtractLine, AgreesWithTheRuleOnAllShortTexts) {
  for (int size = 0; size <= 8; ++size) {
    std::string data(static_cast<std::size_t>(size), 'a');
    for (int code = 0; code < (size == 0 ? 1 : 6561) && size <= 8; ++code) {
      int rest = code;
      for (char& byte : data) {
        byte = "a\r\n"[rest % 3];
        rest /= 3;
      }
      if (rest != 0) break;
      ASSERT_EQ(Extract(data, kLineEndFirstOfEither), SlowFirstOfEither(data))
          << testing::PrintToString(data);
    }
  }
}

TEST(ExtractLine, LeavesTheEncodingToTheLine) {
  struct EncodingRow {
    std::string_view data;
    std::uint32_t given, found;
  };
  const bool noGb18030 = IsYes("QRX_DISABLE_GB18030");
  const EncodingRow rows[] = {
      {"plain\r\n", Charset::Utf8, Charset::Ascii},
      {"\r\n", Charset::Utf8, Charset::Ascii},
      {"\xC3\xA9\r\n", Charset::Utf8, Charset::Utf8},
      {"t\xE9t\xE9 \r\n", Charset::Utf8, Charset::Latin1},
      {"\xB0\xA1\r\n", Charset::Utf8, noGb18030 ? Charset::Latin1 : Charset::Gb18030},
      {"plain\r\n", Charset::Latin1, Charset::Latin1},
      {"\xC3\xA9\r\n", Charset::Raw, Charset::Raw},
      {"\xC3\xA9\r\n", Charset::Gb18030, Charset::Gb18030},
  };
  for (const EncodingRow& row : rows) {
    CText line;
    EXPECT_EQ(ExtractLine(line, row.data.data(), row.data.size(), row.given, 0, nullptr),
              row.data.size());
    EXPECT_EQ(line.Encoding(), row.found) << testing::PrintToString(row.data);
    EXPECT_EQ(line.Bytes(), row.data.substr(0, row.data.size() - 2));
  }
}

TEST(ExtractLine, TakesADataPieceByPiece) {
  // The carriage return of the first line's end comes in the second piece: the flag tells, and the
  // caller takes it off.
  CText line;
  char endAtData = 0;
  const auto take = [&](std::string_view piece) {
    return ExtractLine(line, piece.data(), piece.size(), Charset::Utf8, kLineEndLazy, &endAtData);
  };
  if (IsLazyDisabledHere()) {
    EXPECT_EQ(take("one\n"), 0U) << "no line without its carriage return";
    EXPECT_EQ(take("one\n\rtwo\n\r"), 0U);
    EXPECT_EQ(endAtData, 0);
    return;
  }
  EXPECT_EQ(take("one\n"), 4U);
  EXPECT_EQ(endAtData, 1);
  EXPECT_EQ(take("\rtwo\n\r"), 6U);
  EXPECT_EQ(line.Utf8(), "\rtwo");
  EXPECT_EQ(endAtData, 1);
}

// The carriage return stands at the end of one piece and its line feed at the beginning of the
// next: only a caller who sees both finds a strict end.
TEST(ExtractLine, FindsNoStrictEndInHalfOfOne) {
  CText line;
  char endAtData = 0;
  EXPECT_EQ(ExtractLine(line, "one\r", 4, Charset::Utf8, kLineEndStrict, &endAtData), 0U);
  EXPECT_EQ(ExtractLine(line, "\ntwo", 4, Charset::Utf8, kLineEndStrict, &endAtData), 0U);
  EXPECT_EQ(ExtractLine(line, "one\r\ntwo", 8, Charset::Utf8, kLineEndStrict, &endAtData), 5U);
  EXPECT_EQ(ExtractLine(line, "one\r", 4, Charset::Utf8, kLineEndFirstOfEither, &endAtData), 4U);
  EXPECT_EQ(endAtData, 1) << "its line feed may come";
}

TEST(ExtractLine, TakesItOutOfTheTextItselfAsWell) {
  const std::string longLine(100, 'x');
  CText text(longLine + "\r\nthe rest");
  const std::string_view bytes = text.Bytes();
  EXPECT_EQ(ExtractLine(text, bytes.data(), bytes.size(), Charset::Utf8, kLineEndStrict, nullptr),
            102U);
  EXPECT_EQ(text.Utf8(), longLine);
}

TEST(ExtractLine, LeavesOthersTheirLine) {
  CText line("kept");
  const CText copy = line;
  ExtractLine(line, "new\r\n", 5, Charset::Utf8, kLineEndStrict, nullptr);
  EXPECT_EQ(copy.Utf8(), "kept");
  EXPECT_EQ(line.Utf8(), "new");
}

}  // namespace
