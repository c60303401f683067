#include "Common/EncodingRegistry.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

struct NameRow {
  const char* name;
  std::uint32_t id;
};

constexpr NameRow kTableRows[] = {
    {"", 0},
    {"ASCII", 0},
    {"ascii", 0},
    {"AsCiI", 0},
    {"CHAR", 0},
    {"char", 0},
    {"UTF-8", 1},
    {"UTF8", 1},
    {"utf8", 1},
    {"utf-8", 1},
    {"Utf-8", 1},
    {"uTF8", 1},
    {"ISO-8859-1", 2},
    {"iso-8859-1", 2},
    {"Iso-8859-1", 2},
    {"UTF-32LE", 3},
    {"utf32LE", 3},
    {"UCS-4-INTERNAL", 3},
    {"UTF-32BE", 4},
    {"utf-32BE", 4},
    {"UTF-32", 5},
    {"utf32", 5},
    {"UTF-16LE", 6},
    {"utf-16LE", 6},
    {"UCS-2-INTERNAL", 6},
    {"UTF-16BE", 7},
    {"Utf16BE", 7},
    {"UTF-16", 8},
    {"utf16", 8},
    {"GB18030", 9},
    {"gb18030", 9},
    {"Gb18030", 9},
    {"RAW", 10},
    {"raw", 10},
};

// Near misses: each is a name of its own.
constexpr const char* kForeignNames[] = {
    "AS",          "ASCIIX",         "UTF-16le",       "utf-8le",  "UTF8LE",        "UTF--8",
    "UTF",         "UTF-",           "UTF-7",          "UTF-32Le", "UTF_8",         "GB1803",
    "ISO-8859-15", "ISO-8859-",      "RAWX",           "CHARS",    " UTF-8",        "UTF-8 ",
    "UCS-4",       "ucs-4-internal", "UCS-2-internal", "UTF-080",  "UTF-8//IGNORE",
};

TEST(EncodingRegistry, KnowsTheNamesOfTheTable) {
  for (const NameRow& row : kTableRows) EXPECT_EQ(EncodingId(row.name), row.id) << row.name;
  EXPECT_EQ(EncodingId(nullptr), 0U);
}

TEST(EncodingRegistry, GivesEachForeignNameAnIdForGood) {
  std::vector<std::uint32_t> ids;
  for (const char* name : kForeignNames) {
    const std::uint32_t id = EncodingId(name);
    EXPECT_GE(id, 11U) << name;
    EXPECT_STREQ(EncodingName(id), name);
    for (const std::uint32_t other : ids) EXPECT_NE(id, other) << name;
    ids.push_back(id);
  }
  for (std::size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(EncodingId(kForeignNames[i]), ids[i]);
}

TEST(EncodingRegistry, NamesIds) {
  constexpr const char* kNames[] = {"ASCII",    "UTF-8",   "ISO-8859-1", "UTF-32LE",
                                    "UTF-32BE", "UTF-32",  "UTF-16LE",   "UTF-16BE",
                                    "UTF-16",   "GB18030", "RAW"};
  for (std::uint32_t id = 0; id < 11; ++id) EXPECT_STREQ(EncodingName(id), kNames[id]);
  // Contract: no error.
  EXPECT_STREQ(EncodingName(99999), "ASCII");
  EXPECT_STREQ(EncodingName(0xFFFFFFFF), "ASCII");
}

TEST(EncodingRegistry, TellsWhatConverts) {
  for (std::uint32_t id = 0; id < 10; ++id) {
    EXPECT_TRUE(IsKnownEncoding(id)) << id;
    EXPECT_TRUE(IsEncodingSupported(EncodingName(id))) << id;
  }
  EXPECT_FALSE(IsKnownEncoding(10));
  EXPECT_FALSE(IsKnownEncoding(99999));

  struct Row {
    const char* name;
    bool isSupported;
  };
  constexpr Row kRows[] = {
      {"", true},
      {"CHAR", true},
      {"UCS-4-INTERNAL", true},
      {"raw", false},
      {"UCS-2-INTERNAL", true},
      {"no such encoding", false},
      {"UTF-16le", true},
      {"UCS-4", true},
      {"UTF-8//IGNORE", false},
      {"UTF-8,", false},
      {"UTF-8/", false},
      {"UTF_8", false},
      {"INTERNAL/", false},
      // Names that the C library would read past: what is left of them is an encoding.
      {"UTF-16 ", false},
      {" UTF-8", false},
      {"UTF-8\t", false},
      {" ", false},
      {"?", false},
      {"UTF-8;", false},
      {"\xC3\xA9", false},
      {"UTF-8()", false},
      {"UTF-8\"", false},
      // Names with every character that one may have.
      {"UNICODE", true},
      {"windows-1252", true},
      {"ISO_8859-1:1987", true},
      {"KOI8-R", true},
      {"IBM037", true},
      {"ISO_646.irv:1991", true},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(IsEncodingSupported(row.name), row.isSupported) << row.name;
    const std::uint32_t id = EncodingId(row.name);
    EXPECT_EQ(IsKnownEncoding(id), row.isSupported) << row.name;
    EXPECT_EQ(IsEncodingSupported(row.name), row.isSupported) << row.name << ", once registered";
  }
  EXPECT_TRUE(IsEncodingSupported(nullptr));
}

TEST(EncodingRegistry, SizesCharacters) {
  constexpr std::size_t kSizes[] = {1, 4, 1, 4, 4, 1, 2, 2, 1, 4, 1};
  for (std::uint32_t id = 0; id < 11; ++id) {
    EXPECT_EQ(OutputBytesPerCharacter(id), kSizes[id]) << id;
  }
  EXPECT_EQ(OutputBytesPerCharacter(11), 4U);
  EXPECT_EQ(OutputBytesPerCharacter(99999), 4U);
}

TEST(EncodingRegistry, ServesManyThreads) {
  std::vector<std::vector<std::uint32_t>> ids(8);
  std::vector<std::thread> threads;
  for (auto& own : ids) {
    threads.emplace_back([&own] {
      for (int i = 0; i < 50; ++i) {
        const std::string name = "thread test " + std::to_string(i);
        own.push_back(EncodingId(name.c_str()));
        EXPECT_EQ(EncodingName(own.back()), name);
        EXPECT_FALSE(IsKnownEncoding(own.back()));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& own : ids) EXPECT_EQ(own, ids.front());
}

}  // namespace
