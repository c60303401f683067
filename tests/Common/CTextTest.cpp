#include "Common/CText.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace std::string_view_literals;

namespace {

constexpr std::string_view kMixed = "a\xC3\xA9\xE2\x82\xAC\xF0\x90\x90\x80";  // U+61 E9 20AC 10400
constexpr std::u32string_view kMixedWide = U"a\u00E9\u20AC\U00010400";

TEST(CStringImpl, KeepsUpToThirtyTwoBytesInline) {
  for (const std::size_t size : {0, 1, 31, 32, 33, 64}) {
    const CStringImpl text(std::string(size, 'x'), Charset::Utf8);
    EXPECT_EQ(text.IsInline(), size <= 32) << size;
    EXPECT_EQ(text.Utf8(), std::string(size, 'x'));
    EXPECT_EQ(text.Utf8().data()[size], '\0');
  }
}

TEST(CStringImpl, ReusesItsBlockAndComesBackInline) {
  const std::string atMostInline(32, 'a'), tooLong(33, 'b');
  CStringImpl text(std::string(100, 'x'), Charset::Utf8);
  const char* const block = text.Bytes().data();
  text.Assign(tooLong.data(), tooLong.size(), Charset::Ascii);
  EXPECT_EQ(text.Bytes().data(), block);
  EXPECT_EQ(text.Bytes(), tooLong);
  text.Assign(text.Bytes().data() + 1, 32, Charset::Ascii);
  EXPECT_TRUE(text.IsInline()) << "a short text keeps no block";
  EXPECT_EQ(text.Bytes(), tooLong.substr(1));
  text.Assign(atMostInline.data(), atMostInline.size(), Charset::Ascii);
  EXPECT_EQ(text.Bytes(), atMostInline);
  text.Append(tooLong.data(), tooLong.size(), Charset::Ascii);
  EXPECT_EQ(text.Bytes(), atMostInline + tooLong);
  EXPECT_FALSE(text.IsInline());
  text.Assign(nullptr, 0, Charset::Latin1);
  EXPECT_TRUE(text.IsInline());
  EXPECT_EQ(text.Encoding(), Charset::Latin1);
}

TEST(CStringImpl, TakesItsOwnBytes) {
  CStringImpl text("0123456789", Charset::Utf8);
  text.Assign(text.Bytes().data() + 3, 4, Charset::Utf8);
  EXPECT_EQ(text.Bytes(), "3456");
  for (int i = 0; i < 5; ++i) text.Append(text.Bytes().data(), text.Bytes().size(), Charset::Utf8);
  EXPECT_EQ(text.Bytes().size(), 128U);
  text.Assign(kMixedWide.data(), kMixedWide.size() * 4, Charset::Utf32LE);
  text.Assign(text.Bytes().data() + 4, 4, Charset::Utf32LE);
  EXPECT_EQ(text.Wide(), U"\u00E9");
  const std::string_view utf8 = text.Utf8();
  text.Assign(utf8.data(), utf8.size(), Charset::Utf8);
  EXPECT_EQ(text.Bytes(), "\xC3\xA9");
}

TEST(CStringImpl, ReusesTheBlockOfItsUnits) {
  CStringImpl text;
  const std::u32string large(100, U'x');
  text.Assign(large.data(), 400, Charset::Utf32LE);
  const char* const block = text.Bytes().data();
  text.Assign(kMixedWide.data(), kMixedWide.size() * 4, Charset::Utf32LE);
  EXPECT_EQ(text.Bytes().data(), block);
  EXPECT_EQ(text.Wide(), kMixedWide);
  EXPECT_EQ(text.Wide().data()[4], U'\0');
  const std::u32string larger(250, U'y');
  text.Assign(larger.data(), 1000, Charset::Utf32LE);
  const char* const grown = text.Bytes().data();
  text.Append(larger.data(), 1000, Charset::Utf32LE);
  EXPECT_EQ(text.Bytes().data(), grown) << "a new block is twice as large as it must be";
  EXPECT_EQ(text.Length(), 500U);
}

// What the object holds in one form is assigned in another, which replaces it.
TEST(CStringImpl, TakesTheBytesOfItsOwnForms) {
  CStringImpl text(kMixed, Charset::Utf8);
  std::u32string_view wide = text.Wide();
  text.Assign(wide.data() + 1, 12, Charset::Utf32LE);
  EXPECT_EQ(text.Wide(), kMixedWide.substr(1));
  wide = text.Wide();
  text.Append(wide.data(), wide.size() * 4, Charset::Utf32LE);
  EXPECT_EQ(text.Wide(),
            std::u32string(kMixedWide.substr(1)) + std::u32string(kMixedWide.substr(1)));
  const std::string_view utf8 = text.Utf8();
  text.Assign(utf8.data(), 2, Charset::Utf32LE);  // no whole unit
  EXPECT_TRUE(text.IsEmpty());
  text.Assign("abcd", 4, Charset::Utf8);
  text.Assign(text.Bytes().data(), 4, Charset::Utf32LE);
  EXPECT_EQ(text.Length(), 1U);
  EXPECT_EQ(text.Bytes(), "abcd");
}

TEST(CStringImpl, CountsBytesOrCharacters) {
  struct Row {
    std::string_view bytes;
    std::uint32_t encoding;
    std::uint64_t length;
  };
  const Row kRows[] = {
      {kMixed, Charset::Ascii, kMixed.size()},
      {kMixed, Charset::Latin1, kMixed.size()},
      {kMixed, Charset::Raw, kMixed.size()},
      {kMixed, Charset::Utf8, 4},
      {"a\xFF\xC3"sv, Charset::Utf8, 1},  // what cannot be read is no character
      {"a\0\0\0b\0\0\0x"sv, Charset::Utf32LE, 2},
      {"\0\0\0a\0\0\0b"sv, Charset::Utf32BE, 2},
      {"a\0b\0"sv, Charset::Utf16LE, 2},
      {"\x01\xD8\x00\xDC"sv, Charset::Utf16LE, 1},
      {"\0a\0b"sv, Charset::Utf16, 2},
      {"\xFF\xFE"
       "a\0"sv,
       Charset::Utf16, 1},
      {"a\x81\x30\x81\x30"sv, Charset::Gb18030, 2},
  };
  for (const Row& row : kRows) {
    const CStringImpl text(row.bytes, row.encoding);
    EXPECT_EQ(text.Length(), row.length) << row.bytes << " in " << row.encoding;
    EXPECT_EQ(text.IsEmpty(), false);
  }
  EXPECT_TRUE(CStringImpl("\xFF\xFF", Charset::Utf8).IsEmpty()) << "no character in it";
  EXPECT_TRUE(CStringImpl("xyz", Charset::Utf32LE).IsEmpty()) << "no whole unit in it";
}

TEST(CStringImpl, MakesItsFormsOnDemand) {
  for (const std::uint32_t id :
       {Charset::Utf8, Charset::Utf32LE, Charset::Utf32BE, Charset::Utf32, Charset::Utf16LE,
        Charset::Utf16BE, Charset::Utf16, Charset::Gb18030}) {
    const CStringImpl utf8(kMixed, Charset::Utf8);
    const CStringImpl text(utf8.ToNarrow(id), id);
    EXPECT_EQ(text.Wide(), kMixedWide) << id;
    EXPECT_EQ(text.Utf8(), kMixed) << id;
    EXPECT_EQ(text.Wide().data(), text.Wide().data()) << id;
    EXPECT_EQ(text.Utf8().data(), text.Utf8().data()) << id;
    EXPECT_EQ(text.Length(), 4U) << id;
    EXPECT_EQ(text.ToNarrow(Charset::Utf8), kMixed) << id;
  }
}

TEST(CStringImpl, StaysReadableWhereNothingConverts) {
  for (const std::uint32_t id : {Charset::Raw, EncodingId("no such encoding")}) {
    const CStringImpl text(
        "\x80"
        "a",
        id);
    EXPECT_EQ(text.Bytes(),
              "\x80"
              "a");
    EXPECT_EQ(text.Utf8(),
              "\x80"
              "a");
    EXPECT_EQ(text.Wide(), U"\u0080a");
    EXPECT_EQ(text.ToNarrow(Charset::Utf16LE),
              "\x80"
              "a");
    EXPECT_EQ(text.Length(), 2U);
  }
  EXPECT_EQ(CStringImpl("a", Charset::Utf8).ToNarrow(Charset::Raw), "a");
}

TEST(CStringImpl, DropsWhatIsNoCharacterOnTheWayOut) {
  const char32_t units[] = {U'a', 0xD800, 0xDFFF, 0x110000, 0xFFFFFFFF, 0x10FFFF, U'b'};
  const CStringImpl text({reinterpret_cast<const char*>(units), sizeof units}, Charset::Utf32LE);
  EXPECT_EQ(text.Length(), 7U);
  EXPECT_EQ(text.Utf8(),
            "a\xF4\x8F\xBF\xBF"
            "b");
  EXPECT_EQ(text.ToNarrow(Charset::Utf16LE),
            "a\0\xFF\xDB\xFF\xDF"
            "b\0"sv);
}

struct AppendRow {
  const char* name;
  std::string_view text;
  std::uint32_t encoding;
  std::string_view addition;
  std::uint32_t additionEncoding;
  std::string_view whole;
  std::uint32_t wholeEncoding;
};

TEST(CStringImpl, AppendsInItsOwnEncodingOrBecomesUtf8) {
  const std::uint32_t unknown = EncodingId("no such encoding");
  const AppendRow kRows[] = {
      {"Same", "a", 1, "b", 1, "ab", 1},
      {"Converted", "a", 1, "b\0"sv, 6, "ab", 1},
      {"ConvertedDown", "a\0"sv, 6, "\xC3\xA9", 1, "a\0\xE9\0"sv, 6},
      {"NotRepresentable", "\xE9", 2, "\xE2\x82\xAC", 1, "\xC3\xA9\xE2\x82\xAC", 1},
      {"NothingTransliterated", "a", 0, "\xC3\xA9", 1, "a\xC3\xA9", 1},
      {"BrokenAddition", "a", 1, "b\0\xFF"sv, 6, "ab", 1},
      {"BrokenAdditionAlone", "\xE9", 2, "\xFF", 1, "\xE9", 2},
      {"BrokenInFrontOfRepresentable", "\xE9", 2, "\xFF\xC3\xA8", 1, "\xE9\xE8", 2},
      {"BrokenAscii", "a", 2, "\x80z", 0, "az", 2},
      {"TagIsNotLost", "a", 2, "\xF3\xA0\x81\x81", 1, "a\xF3\xA0\x81\x81", 1},
      {"BeyondTheLast", "a\0"sv, 6, "\xF4\x90\x80\x80", 1, "a\0"sv, 6},
      {"RegisteredMarkWrittenOnce",
       "\xFF\xFE"
       "a\0"sv,
       EncodingId("UNICODE"), "b", 1,
       "\xFF\xFE"
       "a\0b\0"sv,
       EncodingId("UNICODE")},
      {"RegisteredMarkOfTheSame",
       "\xFF\xFE"
       "a\0"sv,
       EncodingId("UNICODE"),
       "\xFF\xFE"
       "b\0"sv,
       EncodingId("UNICODE"),
       "\xFF\xFE"
       "a\0b\0"sv,
       EncodingId("UNICODE")},
      {"RegisteredMarkLacksTheCharacter",
       "\xFF\xFE"
       "a\0"sv,
       EncodingId("UNICODE"), "\xF0\x90\x90\x80", 1, "a\xF0\x90\x90\x80", 1},
      {"MarkOfNothingAdded", "", 8, "\xFF", 1, "", 8},
      {"ToWide", "a\0\0\0"sv, 3, "b", 0, "a\0\0\0b\0\0\0"sv, 3},
      {"MarkWrittenOnce",
       "\xFF\xFE"
       "a\0"sv,
       8, "\xFE\xFF\0b"sv, 8, "\xFE\xFF\0a\0b"sv, 8},
      {"MarkWithoutOne", "\0a"sv, 8, "b", 1, "\xFE\xFF\0a\0b"sv, 8},
      {"EmptyKeepsItsEncoding", "", 6, "a", 1, "a\0"sv, 6},
      {"RawAddition", "a", 1, "\xFF", 10, "a\xFF", 1},
      {"RawText", "\xFF", 10, "\xE9", 2, "\xFF\xE9", 10},
      {"UnknownAddition", "a", 1, "\xFF", unknown, "a\xFF", 1},
      {"UnknownText", "\xFF", unknown, "\xC3\xA9", 1, "\xFF\xC3\xA9", unknown},
      {"RawToWide", "a\0\0\0"sv, 3, "b\0\0\0c"sv, 10, "a\0\0\0b\0\0\0"sv, 3},
      {"NothingAdded", "a", 1, "", 6, "a", 1},
  };
  for (const AppendRow& row : kRows) {
    CStringImpl text(row.text, row.encoding);
    text.Length();
    text.Wide();
    text.Append(row.addition.data(), row.addition.size(), row.additionEncoding);
    EXPECT_EQ(text.Bytes(), row.whole) << row.name;
    EXPECT_EQ(text.Encoding(), row.wholeEncoding) << row.name;
    const CStringImpl fresh(row.whole, row.wholeEncoding);
    EXPECT_EQ(text.Length(), fresh.Length()) << row.name;
    EXPECT_EQ(text.Wide(), fresh.Wide()) << row.name;
    EXPECT_EQ(text.Utf8(), fresh.Utf8()) << row.name;
  }
}

TEST(CStringImpl, ErasesCharacters) {
  for (const std::uint32_t id :
       {Charset::Utf8, Charset::Utf32LE, Charset::Utf16, Charset::Utf16BE, Charset::Gb18030}) {
    const std::string bytes = CStringImpl(kMixed, Charset::Utf8).ToNarrow(id);
    CStringImpl text(bytes, id);
    text.Erase(4, 1);
    text.Erase(0, 0);
    EXPECT_EQ(text.Bytes(), bytes) << id;
    text.Erase(1, 2);
    EXPECT_EQ(text.Utf8(), "a\xF0\x90\x90\x80") << id;
    EXPECT_EQ(text.Length(), 2U) << id;
    text.Erase(1, ~std::uint64_t{0});
    EXPECT_EQ(text.Utf8(), "a") << id;
    text.Erase(0, 1);
    EXPECT_TRUE(text.IsEmpty()) << id;
    EXPECT_EQ(text.Utf8(), "") << id;
  }
  // Unreadable bytes go with the character behind them, and those elsewhere stay.
  CStringImpl broken(
      "\xFF"
      "a\xFF"
      "bc\xC3\xA9\xFF"
      "d\xFF",
      Charset::Utf8);
  broken.Erase(1, 1);
  EXPECT_EQ(broken.Bytes(),
            "\xFF"
            "ac\xC3\xA9\xFF"
            "d\xFF");
  broken.Erase(2, 2);
  EXPECT_EQ(broken.Bytes(),
            "\xFF"
            "ac");
  broken.Erase(0, 9);
  EXPECT_EQ(broken.Bytes(), "");
  CStringImpl latin("\xE9\xE8\xE7", Charset::Latin1);
  latin.Erase(1, 1);
  EXPECT_EQ(latin.Bytes(), "\xE9\xE7");
  EXPECT_EQ(latin.Length(), 2U);
}

TEST(CStringImpl, ReservesRoomAndRefusesTheImpossible) {
  CStringImpl text("ab", Charset::Utf8);
  text.Reserve(100);
  EXPECT_FALSE(text.IsInline());
  const char* const block = text.Bytes().data();
  text.Append(std::string(398, 'x').data(), 398, Charset::Utf8);
  EXPECT_EQ(text.Bytes().data(), block);
  EXPECT_EQ(text.Bytes().size(), 400U);
  EXPECT_THROW(text.Reserve(~std::uint64_t{0}), std::length_error);
  EXPECT_EQ(text.Bytes().size(), 400U);
}

// Meant for the thread sanitizer: every reader may be the one that makes the form.
TEST(CStringImpl, IsReadByManyThreadsForTheFirstTime) {
  for (int round = 0; round < 50; ++round) {
    const CText text(
        "\x00"
        "a\x00\xE9\x20\xAC"sv,
        Charset::Utf16BE);
    std::vector<std::thread> readers;
    std::vector<int> failures(8);
    for (int i = 0; i < 8; ++i) {
      readers.emplace_back([&text, &failed = failures[static_cast<std::size_t>(i)]] {
        const CText own = text;
        failed += own.Wide() != U"a\u00E9\u20AC";
        failed += own.Length() != 3;
        failed += own.Utf8() != "a\xC3\xA9\xE2\x82\xAC";
        failed += !own.EqualsIgnoringCase(CText("A\xC3\x89\xE2\x82\xAC"));
      });
    }
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(failures, std::vector<int>(8));
  }
}

TEST(CText, IsCopiedByTheFirstChange) {
  const CText original("abc");
  CText copy = original;
  EXPECT_EQ(copy.Impl(), original.Impl());
  copy.Append("d", 1, Charset::Ascii);
  EXPECT_NE(copy.Impl(), original.Impl());
  EXPECT_EQ(original.Utf8(), "abc");
  EXPECT_EQ(copy.Utf8(), "abcd");

  copy = original;
  copy.Erase(0, 1);
  EXPECT_EQ(original.Utf8(), "abc");
  copy = original;
  copy.Assign("x", 1, Charset::Utf8);
  EXPECT_EQ(original.Utf8(), "abc");
  copy = original;
  copy.Reserve(100);
  EXPECT_EQ(copy.Utf8(), "abc");
  EXPECT_NE(copy.Impl(), original.Impl());
  copy = original;
  copy.Clear();
  EXPECT_EQ(copy.Impl(), nullptr);
  EXPECT_EQ(original.Utf8(), "abc");
}

TEST(CText, AcceptsTheEmptyHandleEverywhere) {
  CText empty;
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_EQ(empty.Length(), 0U);
  EXPECT_EQ(empty.Bytes(), "");
  EXPECT_EQ(empty.Encoding(), Charset::Ascii);
  EXPECT_STREQ(empty.Utf8().data(), "");
  EXPECT_TRUE(empty.Wide().empty());
  EXPECT_EQ(empty.ToNarrow(Charset::Utf16), "");
  EXPECT_EQ(empty.At(0), 0U);
  EXPECT_EQ(empty.FindCodePoint(U'a'), CText::kNotFound);
  EXPECT_EQ(empty.Part(0, 5).Impl(), nullptr);
  EXPECT_TRUE(empty.ToUpper().IsEmpty());
  EXPECT_EQ(empty.Compare(CText()), 0);
  EXPECT_EQ(empty.Compare(CText("", Charset::Utf16)), 0);
  EXPECT_EQ(empty.Compare(CText("a")), -1);
  EXPECT_EQ(CText("a").Compare(empty), 1);
  EXPECT_TRUE(empty.EqualsIgnoringCase(CText("")));
  EXPECT_TRUE(CText("a").StartsWithIgnoringCase(empty));
  EXPECT_TRUE(CText("a").EndsWithIgnoringCase(empty));
  EXPECT_FALSE(empty.EndsWithIgnoringCase(CText("a")));
  EXPECT_EQ(CText("a").FindIgnoringCase(empty), 0U);
  EXPECT_EQ(empty.FindIgnoringCase(empty), 0U);
  empty.Erase(0, 1);
  empty.Append(CText());
  empty.Clear();
  EXPECT_EQ(empty.Impl(), nullptr);
  empty.Append("\xE9", 1, Charset::Latin1);
  EXPECT_EQ(empty.Encoding(), Charset::Latin1) << "nothing was there to convert to";
}

TEST(CText, AppendsItself) {
  CText text("ab");
  const CText shared = text;
  text.Append(text);
  EXPECT_EQ(text.Utf8(), "abab");
  EXPECT_EQ(shared.Utf8(), "ab");
}

TEST(CText, FindsCodePointsAndTakesParts) {
  const CText text(kMixed);
  EXPECT_EQ(text.At(0), U'a');
  EXPECT_EQ(text.At(3), U'\U00010400');
  EXPECT_EQ(text.At(4), U'\0');
  EXPECT_EQ(text.FindCodePoint(U'\u20AC'), 2U);
  EXPECT_EQ(text.FindCodePoint(U'\u20AC', 2), 2U);
  EXPECT_EQ(text.FindCodePoint(U'\u20AC', 3), CText::kNotFound);
  EXPECT_EQ(text.FindCodePoint(U'a', 99), CText::kNotFound);

  EXPECT_EQ(text.Part(1, 2).Utf8(), "\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(text.Part(0, 99).Impl(), text.Impl());
  EXPECT_EQ(text.Part(3, ~std::uint64_t{0}).Utf8(), "\xF0\x90\x90\x80");
  EXPECT_EQ(text.Part(4, 1).Impl(), nullptr);
  EXPECT_EQ(CText("abc").Part(1, 1).Utf8(), "b");
  EXPECT_EQ(CText("a\xFF"
                  "b\xC3\xA9")
                .Part(1, 1)
                .Bytes(),
            "\xFF"
            "b");
  const char32_t units[] = {U'a', 0xD800, U'b', U'c'};
  const CText wide({reinterpret_cast<const char*>(units), sizeof units}, Charset::Utf32LE);
  EXPECT_EQ(wide.Part(1, 2).Wide(), std::u32string_view(units + 1, 2));
  EXPECT_EQ(wide.Part(1, 2).Encoding(), Charset::Utf32LE);
  const CText utf16("a\0\xE9\0"sv, Charset::Utf16LE);
  EXPECT_EQ(utf16.Part(1, 1).Bytes(), "\xE9\0"sv);
  EXPECT_EQ(utf16.Part(1, 1).Encoding(), Charset::Utf16LE);
}

TEST(CText, MapsCaseCharacterByCharacter) {
  EXPECT_EQ(CText("stra\xC3\x9F"
                  "e \xC3\xA9")
                .ToUpper()
                .Utf8(),
            "STRA\xC3\x9F"
            "E \xC3\x89");
  EXPECT_EQ(CText("\xC3\x89\xC4\xB0").ToLower().Utf8(), "\xC3\xA9i");
  EXPECT_EQ(CText("\xE9", Charset::Latin1).ToUpper().Bytes(), "\xC9");
  EXPECT_EQ(CText("a\0"sv, Charset::Utf16LE).ToUpper().Bytes(), "A\0"sv);
}

TEST(CText, BecomesUtf8WhereItsEncodingLacksTheOtherCase) {
  const CText text("a\xFF", Charset::Latin1);
  EXPECT_EQ(text.ToUpper().Bytes(), "A\xC5\xB8");
  EXPECT_EQ(text.ToUpper().Encoding(), Charset::Utf8);
  EXPECT_EQ(text.ToLower().Bytes(), "a\xFF");
  EXPECT_EQ(text.ToLower().Encoding(), Charset::Latin1);
}

// Bytes that nobody can read are characters of their own: counted, found and kept.
TEST(CText, TakesBytesForCharactersWhereThereAreNoOthers) {
  for (const std::uint32_t id : {Charset::Ascii, Charset::Raw, EncodingId("no such encoding")}) {
    SCOPED_TRACE(id);
    const CText text("a\xE9z", id);
    EXPECT_EQ(text.Length(), 3U);
    EXPECT_EQ(text.At(1), 0xE9U);
    EXPECT_EQ(text.At(2), U'z');
    EXPECT_EQ(text.At(3), U'\0');
    EXPECT_EQ(text.FindCodePoint(U'z'), 2U);
    EXPECT_EQ(text.FindCodePoint(0xE9), 1U);
    EXPECT_EQ(text.FindCodePoint(0xE9, 2), CText::kNotFound);
    EXPECT_EQ(text.FindCodePoint(0x1E9), CText::kNotFound);
    EXPECT_EQ(text.Part(1, 2).Bytes(), "\xE9z");
    EXPECT_EQ(text.ToUpper().Bytes(), "A\xE9Z");
    EXPECT_EQ(text.ToUpper().Encoding(), id);
    CText erased = text;
    erased.Erase(0, 1);
    EXPECT_EQ(erased.Bytes(), "\xE9z");
  }
}

TEST(CText, PutsATextWithoutAByteInFrontOfOneWithoutACharacter) {
  const CText none;
  for (const CText& unreadable :
       {CText("\xFF"), CText("\x80", Charset::Ascii), CText("\xFE\xFF", Charset::Utf16)}) {
    EXPECT_EQ(none.Compare(unreadable), -1);
    EXPECT_EQ(unreadable.Compare(none), 1);
    EXPECT_TRUE(none.EqualsIgnoringCase(unreadable)) << "no character on either side";
  }
}

TEST(CText, ComparesAcrossEncodings) {
  const CText latin("\xE9", Charset::Latin1);
  const CText utf8("\xC3\xA9");
  const CText utf16("\xFF\xFE\xE9\0"sv, Charset::Utf16);
  EXPECT_TRUE(latin.Equals(utf8));
  EXPECT_TRUE(utf16.Equals(latin));
  EXPECT_TRUE(utf16.EqualsIgnoringCase(CText("\xC9", Charset::Latin1)));
  EXPECT_EQ(CText("\xEF\xBF\xBF").Compare(CText("\xD8\x00\xDC\x00"sv, Charset::Utf16BE)), -1)
      << "by code point, not by unit";

  // RAW has bytes alone, and so has what meets it.
  const CText raw("\xC3\xA9", Charset::Raw);
  EXPECT_TRUE(raw.Equals(utf8));
  EXPECT_FALSE(raw.Equals(latin));
  EXPECT_FALSE(raw.Equals(utf16));
  EXPECT_FALSE(raw.EqualsIgnoringCase(CText("\xC3\x89")));
  EXPECT_TRUE(CText("aB", Charset::Raw).EqualsIgnoringCase(CText("Ab")));
}

TEST(CText, SharesItsBytes) {
  std::shared_ptr<const char> bytes;
  {
    const CText text("kept alive by the handle alone, and long");
    bytes = text.Impl()->ShareBytes();
    EXPECT_EQ(text.Impl()->UseCount(), 2U);
  }
  EXPECT_STREQ(bytes.get(), "kept alive by the handle alone, and long");

  static constexpr char kLiteral[] = "literal";
  const std::shared_ptr<const char> unowned(kLiteral, CStringImpl::NullDeleter());
  EXPECT_STREQ(unowned.get(), "literal");

  char* const block = static_cast<char*>(::operator new(2));
  block[0] = 'x';
  block[1] = '\0';
  const std::shared_ptr<const char> owned(block, CStringImpl::FreeDeleter());
  EXPECT_STREQ(owned.get(), "x");
}

}  // namespace
