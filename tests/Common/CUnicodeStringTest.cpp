#include "Common/CUnicodeString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

using namespace std::string_view_literals;

namespace {

CUsePtr<CUnicodeString> Make(std::string_view bytes, std::uint32_t encoding = Charset::Utf8) {
  return MakeUseCounted<CUnicodeString>(bytes, encoding);
}

TEST(CUnicodeString, IsEmptyWithoutAnObject) {
  const auto text = MakeUseCounted<CUnicodeString>();
  EXPECT_TRUE(text->IsEmpty());
  EXPECT_EQ(text->GetLength(), 0U);
  EXPECT_EQ(text->GetByteSize(), 0U);
  EXPECT_STREQ(text->GetBytes(), "");
  EXPECT_STREQ(text->GetUtf8(), "");
  EXPECT_STREQ(text->GetEncodingName(), "ASCII");
  EXPECT_EQ(text->Text().Impl(), nullptr);
  text->Erase(0, 5);
  text->Clear();
  EXPECT_TRUE(text->Equals(nullptr));
  EXPECT_EQ(text->ToLong(), 0);
  char buffer[4] = "abc";
  EXPECT_EQ(text->Read(buffer, sizeof buffer, "UTF-8"), 0U);
  EXPECT_STREQ(buffer, "abc");
}

TEST(CUnicodeString, CountsItsReferencesThroughBothBases) {
  auto text = Make("a");
  Selvane::IUnicodeString* const asInterface = text.Get();
  EXPECT_EQ(asInterface->AddRef(), 2U);
  EXPECT_EQ(text->UseCount(), 2U);
  EXPECT_EQ(asInterface->GetUseCount(), 2U);
  EXPECT_FALSE(static_cast<Selvane::IObject*>(asInterface)->Release());
  EXPECT_TRUE(text.Detach()->Release());
}

TEST(CUnicodeString, AssignsBytesUnderTheNamedEncoding) {
  const auto text = MakeUseCounted<CUnicodeString>();
  text->Assign("\xE9t\xE9", 3, "iso-8859-1");
  EXPECT_STREQ(text->GetEncodingName(), "ISO-8859-1");
  EXPECT_EQ(text->GetLength(), 3U);
  EXPECT_EQ(text->GetByteSize(), 3U);
  EXPECT_STREQ(text->GetUtf8(), "\xC3\xA9t\xC3\xA9");

  const auto other = MakeUseCounted<CUnicodeString>();
  other->Assign(text.Get());
  EXPECT_STREQ(other->GetEncodingName(), "ISO-8859-1");
  EXPECT_TRUE(other->Equals(text.Get()));

  other->Assign(other.Get());
  other->Assign(nullptr);  // changes nothing
  EXPECT_TRUE(other->Equals(text.Get()));
}

TEST(CUnicodeString, AppendsErasesAndClears) {
  const auto text = Make("a\xC3\xA9");
  text->Append("\xE9", 1, "ISO-8859-1");
  EXPECT_STREQ(text->GetUtf8(), "a\xC3\xA9\xC3\xA9");
  text->Append(text.Get());
  EXPECT_STREQ(text->GetUtf8(),
               "a\xC3\xA9\xC3\xA9"
               "a\xC3\xA9\xC3\xA9");
  text->Append(nullptr);
  text->Erase(1, 3);
  EXPECT_STREQ(text->GetUtf8(), "a\xC3\xA9\xC3\xA9");
  text->Clear();
  EXPECT_TRUE(text->IsEmpty());
  EXPECT_STREQ(text->GetEncodingName(), "ASCII");
}

TEST(CUnicodeString, ComparesWithBytesTextsAndOtherObjects) {
  const auto text = Make("b");
  EXPECT_EQ(text->Compare("a", 1, "ASCII"), 1);
  EXPECT_EQ(text->Compare("b", 1, "UTF-8"), 0);
  EXPECT_EQ(text->Compare("c", 1, "UTF-8"), -1);
  EXPECT_EQ(text->Compare("c", "UTF-8"), -1);
  EXPECT_EQ(text->Compare(nullptr, "UTF-8"), 1);
  EXPECT_EQ(text->Compare(Make("b").Get()), 0);
  EXPECT_TRUE(text->Equals("b\0"sv.data(), 1, "ISO-8859-1"));
  EXPECT_FALSE(text->Equals("bb", 2, "ISO-8859-1"));

  const auto empty = MakeUseCounted<CUnicodeString>();
  EXPECT_EQ(empty->Compare("a", 1, "ASCII"), -1);
  EXPECT_EQ(empty->Compare("a", "ASCII"), -1);
  EXPECT_EQ(empty->Compare(text.Get()), -1);
  EXPECT_EQ(empty->Compare("", 0, "UTF-16LE"), 0);
  EXPECT_EQ(empty->Compare("\xFF", 1, "UTF-8"), -1);
  EXPECT_FALSE(empty->Equals("\xFF", 1, "UTF-8"));
}

TEST(CUnicodeString, ReadsIntoABufferInAnEncoding) {
  const auto text = Make("a\xE2\x82\xAC");
  char buffer[8] = {};
  EXPECT_EQ(text->Read(buffer, sizeof buffer, "UTF-16LE"), 4U);
  EXPECT_EQ(std::string_view(buffer, 4), "a\0\xAC\x20"sv);
  EXPECT_EQ(text->Read(buffer, 3, "UTF-16BE"), 3U);
  EXPECT_EQ(std::string_view(buffer, 4), "\0a\x20\x20"sv) << "the fourth byte is the one before";
  EXPECT_EQ(text->Read(buffer, sizeof buffer, "RAW"), 4U);
  EXPECT_EQ(text->Read(buffer, 0, "UTF-8"), 0U);
}

TEST(CUnicodeString, ReadsNothingOfAnEmptyText) {
  const CUsePtr<CUnicodeString> rows[] = {MakeUseCounted<CUnicodeString>(), Make(""),
                                          Make("", Charset::Utf16), Make("\xFF")};
  char buffer[8];
  for (const auto& text : rows) {
    for (const char* encoding : {"UTF-16", "UTF-32", "UTF-16LE", "GB18030"}) {
      EXPECT_EQ(text->Read(buffer, sizeof buffer, encoding), 0U) << encoding;
    }
  }
}

TEST(CUnicodeString, HandsOutTheSameHandle) {
  const CText text("shared");
  const auto first = MakeUseCounted<CUnicodeString>(text);
  const auto second = MakeUseCounted<CUnicodeString>(text);
  EXPECT_EQ(first->Text().Impl(), second->Text().Impl());
  first->Append("!", 1, "ASCII");
  EXPECT_STREQ(second->GetUtf8(), "shared");
  EXPECT_STREQ(first->GetUtf8(), "shared!");
}

TEST(CUnicodeString, ReadsANumberFromItsBeginning) {
  struct Row {
    std::string_view text;
    std::int64_t value;
  };
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
  constexpr Row kRows[] = {
      {"", 0},
      {"x1", 0},
      {"0", 0},
      {"42", 42},
      {" \t 42 7", 42},
      {"+42", 42},
      {"-42abc", -42},
      {"+-42", 0},
      {"- 42", 0},
      {"-", 0},
      {"\n42", 0},
      {"4.9", 4},
      {"0x10", 0},
      {"007", 7},
      {"9223372036854775807", kMost},
      {"9223372036854775808", kMost},
      {"99999999999999999999999999", kMost},
      {"-9223372036854775808", kLeast},
      {"-9223372036854775809", kLeast},
      {"-99999999999999999999999999", kLeast},
      {"1\0002"sv, 1},
  };
  for (const Row& row : kRows) EXPECT_EQ(Make(row.text)->ToLong(), row.value) << row.text;
  EXPECT_EQ(Make("1\0"
                 "2\0"sv,
                 Charset::Utf16LE)
                ->ToLong(),
            12);
}

// Calls an operation by its place in the table of the class that others were built against.
template <class Result, class... Arguments>
Result CallSlot(Selvane::IUnicodeString* object, std::size_t slot, Arguments... arguments) {
  using Operation = Result (*)(void*, Arguments...);
  const Operation* const operations = *reinterpret_cast<Operation* const*>(object);
  return operations[slot](object, arguments...);
}

TEST(CUnicodeString, KeepsItsOperationsInOrder) {
  const auto text = Make("a\xC3\xA9");
  const auto other = Make("b");
  Selvane::IUnicodeString* const object = text.Get();
  Selvane::IUnicodeString* const argument = other.Get();
  const void* const bytes = "c";
  const char* const utf8 = "UTF-8";
  constexpr std::size_t kOne = 1;

  EXPECT_EQ(CallSlot<std::uint32_t>(object, 0), 2U);            // AddRef
  EXPECT_FALSE(CallSlot<bool>(object, 1));                      // Release
  EXPECT_EQ(CallSlot<std::uint32_t>(object, 2), 1U);            // GetUseCount
  EXPECT_EQ(CallSlot<std::uint64_t>(object, 3), 2U);            // GetLength
  EXPECT_EQ(CallSlot<std::uint64_t>(object, 4), 3U);            // GetByteSize
  EXPECT_STREQ(CallSlot<const char*>(object, 5), "a\xC3\xA9");  // GetBytes
  EXPECT_STREQ(CallSlot<const char*>(object, 6), "UTF-8");      // GetEncodingName
  EXPECT_FALSE(CallSlot<bool>(object, 7));                      // IsEmpty
  CallSlot<void>(object, 8, std::uint64_t{100});                // Reserve
  EXPECT_FALSE(text->Text().Impl()->IsInline());
  CallSlot<void>(object, 9, bytes, kOne, utf8);  // Assign
  EXPECT_STREQ(text->GetUtf8(), "c");
  CallSlot<void>(object, 10, argument);
  EXPECT_STREQ(text->GetUtf8(), "b");
  CallSlot<void>(object, 11, bytes, kOne, utf8);  // Append
  EXPECT_STREQ(text->GetUtf8(), "bc");
  CallSlot<void>(object, 12, argument);
  EXPECT_STREQ(text->GetUtf8(), "bcb");
  CallSlot<void>(object, 13, kOne, kOne + 1);  // Erase
  EXPECT_STREQ(text->GetUtf8(), "b");
  EXPECT_TRUE(CallSlot<bool>(object, 15, argument));  // Equals
  EXPECT_FALSE(CallSlot<bool>(object, 16, bytes, kOne, utf8));
  EXPECT_EQ(CallSlot<std::int32_t>(object, 17, bytes, kOne, utf8), -1);  // Compare
  EXPECT_EQ(CallSlot<std::int32_t>(object, 18, argument), 0);
  EXPECT_EQ(CallSlot<std::int32_t>(object, 19, static_cast<const char*>("a"), utf8), 1);
  char buffer[2] = {};
  EXPECT_EQ(CallSlot<std::size_t>(object, 20, static_cast<void*>(buffer), sizeof buffer, utf8), 1U);
  EXPECT_STREQ(buffer, "b");
  EXPECT_STREQ(CallSlot<const char*>(object, 21), "b");  // GetUtf8
  CallSlot<void>(object, 14);                            // Clear
  EXPECT_TRUE(text->IsEmpty());
}

}  // namespace
