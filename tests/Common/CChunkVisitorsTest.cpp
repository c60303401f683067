#include "Common/CChunkVisitors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Common/CBuffer.h"
#include "Common/CException.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "tests/Common/CBufferSupport.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/Common/ReasonOf.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

struct Found {
  std::size_t offset;
  int index;
  bool operator==(const Found&) const = default;
};

void PrintTo(const Found& found, std::ostream* out) {
  *out << found.index << " at " << found.offset;
}

CUsePtr<CVariant> LengthsOf(const Texts& patterns) {
  auto lengths = MakeUseCounted<CVariant>(VariantType::LongList);
  for (const std::string& text : patterns)
    lengths->AddToList(static_cast<std::int64_t>(text.size()));
  return lengths;
}

std::vector<const void*> PointersOf(const Texts& patterns) {
  std::vector<const void*> pointers;
  for (const std::string& text : patterns) pointers.push_back(text.data());
  return pointers;
}

CUsePtr<CVariant> ListOf(const Texts& patterns, std::uint32_t encoding = Charset::Utf8) {
  auto list = MakeUseCounted<CVariant>(VariantType::StringList);
  for (const std::string& text : patterns) {
    list->AddToList(MakeUseCounted<CStringImpl>(text, encoding).Get());
  }
  return list;
}

// Shows the visitor pieces of that size.
std::optional<Found> SearchInPieces(CSearchVisitor& search, const std::string& text,
                                    std::size_t pieceSize) {
  bool more = true;
  for (std::size_t from = 0; from < text.size() && more; from += pieceSize) {
    search.Visit(text.data() + from, std::min(pieceSize, text.size() - from), pieceSize, more);
  }
  bool found = false;
  Found result{};
  search.GetResult(found, result.index, result.offset);
  EXPECT_EQ(found, !more);
  return found ? std::optional(result) : std::nullopt;
}

std::optional<Found> SearchInPieces(const Texts& patterns, const std::string& text,
                                    std::size_t pieceSize) {
  const auto pointers = PointersOf(patterns);
  const auto search = MakeUseCounted<CSearchVisitor>(pointers.data(), LengthsOf(patterns).Get());
  EXPECT_TRUE(search->IsValid());
  return SearchInPieces(*search, text, pieceSize);
}

// The pattern that ends first; of those that end together, the first in the list.
std::optional<Found> SearchSlowly(const Texts& patterns, const std::string& text) {
  for (std::size_t end = 1; end <= text.size(); ++end) {
    for (std::size_t i = 0; i < patterns.size(); ++i) {
      if (patterns[i].empty()) return Found{0, 0};
      if (text.substr(0, end).ends_with(patterns[i])) {
        return Found{end - patterns[i].size(), static_cast<int>(i)};
      }
    }
  }
  return std::nullopt;
}

TEST(CSearchVisitor, FindsAcrossPieces) {
  EXPECT_EQ(SearchInPieces({"cdef"}, "abcdefgh", 4), (Found{2, 0}));
  EXPECT_EQ(SearchInPieces({"ab", "b"}, "ab", 4), (Found{0, 0})) << "the first in the list wins";
  EXPECT_EQ(SearchInPieces({"b", "ab"}, "ab", 4), (Found{1, 0}));
  EXPECT_EQ(SearchInPieces({"x", "cdefghij"}, "abcdefghijkl", 3), (Found{2, 1}));
  EXPECT_EQ(SearchInPieces({"abc"}, "", 4), std::nullopt);
  EXPECT_EQ(SearchInPieces(Texts{}, "abc", 4), std::nullopt);
  EXPECT_EQ(SearchInPieces({"abcd"}, "abc", 4), std::nullopt);
}

// Contract: an empty pattern is told as the first of the list, wherever it stands.
TEST(CSearchVisitor, FindsAnEmptyPatternUnderIndexZero) {
  EXPECT_EQ(SearchInPieces({"x", ""}, "ab", 4), (Found{0, 0}));
  EXPECT_EQ(SearchInPieces({"x", "a", "", "y"}, "ab", 4), (Found{0, 1})) << "what is before it";
  EXPECT_EQ(SearchInPieces({""}, "", 4), std::nullopt) << "only at a byte";
}

TEST(CSearchVisitor, AgreesWithASlowSearch) {
  std::mt19937 random(82);
  for (int round = 0; round < 4000; ++round) {
    const auto letters = [&](std::size_t length) {
      std::string text(length, 'a');
      for (char& c : text) c = static_cast<char>('a' + random() % 2);
      return text;
    };
    Texts patterns(1 + random() % (round % 100 == 0 ? 130 : 4));
    for (std::string& pattern : patterns) pattern = letters(1 + random() % 12);
    const std::string text = letters(random() % 60);
    for (std::size_t piece = 1; piece < 10; ++piece) {
      ASSERT_EQ(SearchInPieces(patterns, text, piece), SearchSlowly(patterns, text))
          << testing::PrintToString(patterns) << " in " << text << ", pieces of " << piece;
    }
  }
}

// Contract: a hit forgets what the others had matched; Reset alone does not.
TEST(CSearchVisitor, StartsAfreshBehindAHit) {
  const Texts patterns = {"abcd", "c"};
  const auto pointers = PointersOf(patterns);
  CSearchVisitor* search = new CSearchVisitor(pointers.data(), LengthsOf(patterns).Get());
  EXPECT_EQ(SearchInPieces(*search, "abc", 9), (Found{2, 1}));
  search->Reset();
  EXPECT_EQ(SearchInPieces(*search, "d", 9), std::nullopt)
      << "the rest of abcd, whose start is lost";
  search->Reset();
  EXPECT_EQ(SearchInPieces(*search, "ab", 9), std::nullopt);
  search->Reset();
  EXPECT_EQ(SearchInPieces(*search, "c", 9), (Found{0, 1}));
  search->Release();
}

TEST(CSearchVisitor, EndsItsListAtANegativeLength) {
  const Texts patterns = {"x", "b"};
  const auto pointers = PointersOf(patterns);
  const auto lengths = MakeUseCounted<CVariant>(VariantType::LongList);
  lengths->AddToList(std::int64_t{1});
  lengths->AddToList(std::int64_t{-1});
  lengths->AddToList(std::int64_t{1});
  const auto search = MakeUseCounted<CSearchVisitor>(pointers.data(), lengths.Get());
  EXPECT_TRUE(search->IsValid());
  EXPECT_EQ(SearchInPieces(*search, "ab", 9), std::nullopt);
}

TEST(CSearchVisitor, TakesStringsOfAnyEncoding) {
  struct Row {
    std::uint32_t encoding;
    std::string pattern, text;
  };
  const Row rows[] = {{Charset::Ascii, "bc", "abcd"},
                      {Charset::Utf8, "\xC3\xA9", "a\xC3\xA9"},
                      {Charset::Latin1, "\xE9", "a\xC3\xA9"},
                      {Charset::Utf16LE, std::string("\xE9\0", 2), "a\xC3\xA9"},
                      {Charset::Raw, "\xFF\xFE", "a\xFF\xFE"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.encoding);
    const auto search =
        MakeUseCounted<CSearchVisitor>(ListOf({"none", row.pattern}, row.encoding).Get());
    ASSERT_TRUE(search->IsValid());
    EXPECT_EQ(SearchInPieces(*search, row.text, 2), (Found{1, 1})) << "the list is gone by now";
  }
}

TEST(CSearchVisitor, TakesAStringWithoutBytesForAnEmptyPattern) {
  for (const std::uint32_t encoding : {Charset::Utf8, Charset::Latin1}) {
    const auto search = MakeUseCounted<CSearchVisitor>(ListOf({"x", ""}, encoding).Get());
    ASSERT_TRUE(search->IsValid());
    EXPECT_EQ(SearchInPieces(*search, "ab", 4), (Found{0, 0}));
  }
  const void* const none = nullptr;
  const auto pointers = MakeUseCounted<CSearchVisitor>(&none, LengthsOf({"abc"}).Get());
  EXPECT_EQ(SearchInPieces(*pointers, "ab", 4), (Found{0, 0})) << "bytes that are not there";
}

TEST(CSearchVisitor, ReportsWhatIsNoList) {
  const HostInSlot host(Gates{});
  const void* const pattern = "a";
  const auto number = MakeUseCounted<CVariant>(std::int64_t{1});
  EXPECT_FALSE(MakeUseCounted<CSearchVisitor>(&pattern, number.Get())->IsValid());
  EXPECT_FALSE(MakeUseCounted<CSearchVisitor>(number.Get())->IsValid());
  ASSERT_EQ(host->fErrors.size(), 2U);
  EXPECT_THAT(host->fErrors[0].message,
              "'Cannot create searcher. patternLengths is not a long list but a Long'");
  EXPECT_THAT(host->fErrors[1].message,
              "'Cannot create searcher. patterns is not a string list but a Long'");
  EXPECT_EQ(host->fErrors[1].className + "::" + host->fErrors[1].function,
            "CSearchVisitor::CSearchVisitor");
}

// ---- all hits

// Notes the hits of a range, up to so many.
class HitCollector final : public AHitVisitor {
public:
  HitCollector(CSearchVisitor& search, std::uint64_t start, std::uint64_t length, std::size_t most)
      : AHitVisitor(search, start, length), fMost(most) {}

  std::vector<Found> fHits;

private:
  bool OnHit(const Hit& hit) override {
    fHits.push_back({hit.offset, hit.index});
    return fHits.size() < fMost;
  }

  const std::size_t fMost;
};

std::vector<Found> AllHits(const Texts& patterns, const std::string& text, std::size_t start,
                           std::size_t length, std::size_t pieceSize, std::size_t most = kAll) {
  const auto pointers = PointersOf(patterns);
  const auto search = MakeUseCounted<CSearchVisitor>(pointers.data(), LengthsOf(patterns).Get());
  HitCollector hits(*search, start, length, most);
  bool more = true;
  for (std::size_t from = start; from < text.size() && more; from += pieceSize) {
    hits.Visit(text.data() + from, std::min(pieceSize, text.size() - from), pieceSize, more);
  }
  EXPECT_EQ(more, hits.GetPosition() < start + length && hits.fHits.size() < most);
  return hits.fHits;
}

// One slow search behind the other.
std::vector<Found> AllHitsSlowly(const Texts& patterns, const std::string& text, std::size_t start,
                                 std::size_t length) {
  std::vector<Found> hits;
  const std::string range = text.substr(0, std::min(text.size(), start + length));
  while (start <= range.size()) {
    const auto found = SearchSlowly(patterns, range.substr(start));
    if (!found) break;
    hits.push_back({start + found->offset, found->index});
    start = hits.back().offset + patterns[static_cast<std::size_t>(found->index)].size();
  }
  return hits;
}

TEST(AHitVisitor, FindsAllThatSlowSearchesFind) {
  std::mt19937 random(3);
  for (int round = 0; round < 2000; ++round) {
    const auto letters = [&](std::size_t length) {
      std::string text(length, 'a');
      for (char& c : text) c = static_cast<char>('a' + random() % 2);
      return text;
    };
    Texts patterns(1 + random() % 4);
    for (std::string& pattern : patterns) pattern = letters(1 + random() % 5);
    const std::string text = letters(10 + random() % 50);
    const std::size_t start = random() % 10;
    const std::size_t length = random() % text.size();
    for (std::size_t piece = 1; piece < 10; ++piece) {
      ASSERT_EQ(AllHits(patterns, text, start, length, piece),
                AllHitsSlowly(patterns, text, start, length))
          << testing::PrintToString(patterns) << " in " << text << " from " << start << ", "
          << length << ", pieces of " << piece;
    }
  }
}

TEST(AHitVisitor, EndsWhenItIsTold) {
  EXPECT_THAT(AllHits({"a"}, "aaaa", 0, 4, 3, 2), ElementsAre(Found{0, 0}, Found{1, 0}));
  EXPECT_THAT(AllHits({"a"}, "aaaa", 0, kAll - 1, 9), testing::SizeIs(4));
  EXPECT_THAT(AllHits({"a"}, "aaaa", 1, 0, 2), IsEmpty());

  const void* const empty = "";
  const auto search = MakeUseCounted<CSearchVisitor>(&empty, LengthsOf({""}).Get());
  HitCollector hits(*search, 1, 3, kAll);
  bool more = true;
  hits.Visit("aaa", 3, 3, more);
  EXPECT_FALSE(more) << "an empty pattern would be found here for ever";
  EXPECT_THAT(hits.fHits, ElementsAre(Found{1, 0}));
}

// ---- through a buffer

TEST(CBufferSearch, ThrowsForArgumentsThatAreNoLists) {
  const HostInSlot host(Gates{});
  CBuffer buffer("abc", 3);
  const void* const pattern = "a";
  const auto number = MakeUseCounted<CVariant>(std::int64_t{1});
  const auto strings = ListOf({"a"});
  const auto longs = LengthsOf({"a"});
  std::size_t offset = 7;
  unsigned index = 7;
  const auto first = [&](const void* const* patterns, Selvane::IVariant* lengths) {
    return ReasonOf([&] { buffer.IFFindBinaryPatterns(offset, index, patterns, lengths, 0, 3); });
  };
  const auto second = [&](Selvane::IVariant* patterns) {
    return ReasonOf([&] { buffer.IFFindBinaryPatterns(offset, index, patterns, 0, 3); });
  };
  EXPECT_EQ(first(nullptr, nullptr), "'Patterns is NULL.'");
  EXPECT_EQ(first(&pattern, nullptr), "'PatternLengths is NULL.'");
  EXPECT_EQ(first(&pattern, number.Get()), "'Pattern is not a long-list.'");
  EXPECT_EQ(first(&pattern, strings.Get()),
            "'Cannot create searcher for patternLengths of type 'StringList''");
  EXPECT_EQ(second(nullptr), "'Patterns is NULL.'");
  EXPECT_EQ(second(number.Get()), "'Pattern is not a string-list.'");
  EXPECT_EQ(second(longs.Get()), "'Cannot create searcher for patterns of type 'LongList''");
  EXPECT_EQ(offset, 7U);
  EXPECT_EQ(index, 7U);
  EXPECT_EQ(host->fErrors.back().className + "::" + host->fErrors.back().function,
            "CBuffer::IFFindBinaryPatterns");
  std::vector<std::size_t> offsets;
  EXPECT_EQ(ReasonOf([&] { buffer.GetAllOccurrences(offsets, "a", kAll, 0, 3); }),
            "'IVariant::Int cannot hold value from size_t'");
  EXPECT_EQ(host->fErrors.back().function, "GetAllOccurrences");
}

// Both forms of a buffer with that text.
template <class Use>
void InBothForms(const std::string& text, Use use) {
  for (const bool onFile : {false, true}) {
    SCOPED_TRACE(onFile);
    CBuffer buffer(text.data(), text.size());
    if (onFile) {
      ASSERT_TRUE(buffer.SwapOut());
    }
    use(buffer);
  }
}

TEST(CBufferSearch, FindsInARange) {
  InBothForms("abcabc", [](CBuffer& buffer) {
    struct Row {
      std::size_t start, length;
      std::optional<Found> found;
    };
    const Row rows[] = {{0, 6, Found{1, 0}},
                        {0, kAll, Found{1, 0}},
                        {1, 2, Found{0, 0}},
                        {2, 4, Found{2, 0}},
                        {2, kAll, Found{2, 0}},
                        {0, 2, {}},
                        {5, 1, {}},
                        {6, 1, {}},
                        {7, kAll, {}},
                        {kAll, kAll, {}},
                        {0, 0, {}}};
    for (const Row& row : rows) {
      SCOPED_TRACE(row.start);
      const auto check = [&](auto find) {
        std::size_t offset = 77;
        unsigned index = 77;
        EXPECT_EQ(find(offset, index), row.found.has_value());
        EXPECT_EQ(offset, row.found ? row.found->offset : 77);
        EXPECT_EQ(index, row.found ? 0U : 77U) << "unwritten without a hit";
      };
      const void* const pattern = "bc";
      check([&](std::size_t& offset, unsigned& index) {
        return buffer.IFFindBinaryPatterns(offset, index, &pattern, LengthsOf({"bc"}).Get(),
                                           row.start, row.length);
      });
      check([&](std::size_t& offset, unsigned& index) {
        return buffer.IFFindBinaryPatterns(offset, index, ListOf({"bc"}).Get(), row.start,
                                           row.length);
      });
    }
  });
}

TEST(CBufferSearch, FindsOverThePiecesOfAFile) {
  constexpr std::size_t kPiece = AChunkVisitor::kDefaultChunkSize;
  for (const std::size_t place : {kPiece - 3, kPiece - 1, kPiece, 2 * kPiece - 4, 2 * kPiece + 5}) {
    std::string text(2 * kPiece + 100, 'n');
    text.replace(place, 6, "needle");
    InBothForms(text, [&](CBuffer& buffer) {
      std::size_t offset = 0;
      unsigned index = 0;
      EXPECT_TRUE(
          buffer.IFFindBinaryPatterns(offset, index, ListOf({"x", "needle"}).Get(), 10, kAll));
      EXPECT_EQ(offset, place - 10);
      EXPECT_EQ(index, 1U);
    });
  }
}

std::vector<std::size_t> Occurrences(CBuffer& buffer, const std::string& pattern, std::size_t start,
                                     std::size_t length) {
  std::vector<std::size_t> offsets;
  buffer.GetAllOccurrences(offsets, pattern.data(), pattern.size(), start, length);
  return offsets;
}

TEST(CBufferSearch, FindsAllOccurrences) {
  InBothForms("aaaaa", [](CBuffer& buffer) {
    EXPECT_THAT(Occurrences(buffer, "aaa", 0, kAll), ElementsAre(0)) << "no overlap";
    EXPECT_THAT(Occurrences(buffer, "", 0, kAll), IsEmpty());
    EXPECT_THAT(Occurrences(buffer, "a", 5, kAll), IsEmpty());
    EXPECT_THAT(Occurrences(buffer, "a", 9, 1), IsEmpty());
  });
  // Contract: the end of the range moves on with each hit.
  InBothForms("abab", [](CBuffer& buffer) {
    EXPECT_THAT(Occurrences(buffer, "ab", 0, 3), ElementsAre(0, 2));
  });
  InBothForms("aaaaaa", [](CBuffer& buffer) {
    EXPECT_THAT(Occurrences(buffer, "a", 0, 2), ElementsAre(0, 1, 2, 3, 4, 5));
  });
}

// The steps as they are told: one search a hit, and only what is before the hit off the range.
std::vector<std::size_t> OccurrencesSlowly(const std::string& text, const std::string& pattern,
                                           std::size_t start, std::size_t length) {
  std::vector<std::size_t> offsets;
  if (start >= text.size()) return offsets;
  std::size_t position = start;
  std::size_t remaining = std::min(length, text.size() - start);
  while (position <= text.size()) {
    const auto found = SearchSlowly({pattern}, text.substr(position, remaining));
    if (!found) break;
    offsets.push_back(position + found->offset);
    position += found->offset + pattern.size();
    if (remaining < found->offset) break;
    remaining -= found->offset;
  }
  return offsets;
}

TEST(CBufferSearch, FindsAllThatASlowSearchFinds) {
  std::mt19937 random(14);
  for (int round = 0; round < 3000; ++round) {
    std::string text(random() % 40, 'a');
    for (char& c : text) c = static_cast<char>('a' + random() % 2);
    std::string pattern(1 + random() % 4, 'a');
    for (char& c : pattern) c = static_cast<char>('a' + random() % 2);
    const std::size_t start = random() % 10;
    const std::size_t length = random() % 40;
    CBuffer buffer(text.data(), text.size());
    ASSERT_EQ(Occurrences(buffer, pattern, start, length),
              OccurrencesSlowly(text, pattern, start, length))
        << pattern << " in " << text << " from " << start << ", " << length;
  }
}

TEST(CBufferSearch, Replaces) {
  struct Row {
    const char *replacement, *result;
  };
  for (const Row& row :
       {Row{"xy", "xy1xy2xy"}, Row{"z", "z1z2z"}, Row{"long", "long1long2long"}, Row{"", "12"}}) {
    InBothForms("ab1ab2ab", [&](CBuffer& buffer) {
      const std::string text = row.replacement;
      std::size_t count = 7;
      buffer.SeekRead(8, 0);
      EXPECT_TRUE(buffer.Replace("ab", 2, text.data(), text.size(), 0, kAll, &count));
      EXPECT_EQ(count, 3U);
      EXPECT_EQ(BytesOf(buffer), row.result);
      EXPECT_EQ(buffer.GetReadPosition(),
                std::min<std::int64_t>(8, static_cast<std::int64_t>(buffer.GetSize())));
      EXPECT_TRUE(buffer.Replace("none", 4, "", 0, 0, kAll, &count));
      EXPECT_EQ(count, 0U);
      EXPECT_TRUE(buffer.Replace("1", 1, "!", 1, 0, kAll, nullptr));
      EXPECT_FALSE(buffer.Replace("1", 0, "!", 1, 0, kAll, &count));
      EXPECT_FALSE(buffer.Replace("2", 1, nullptr, 1, 0, kAll, nullptr));
    });
  }
}

TEST(CBufferSearch, ReplacesByBytesOfItsOwn) {
  InBothForms("xyxy", [](CBuffer& buffer) {
    const auto* bytes = static_cast<const char*>(buffer.GetBufferPtr());
    EXPECT_TRUE(buffer.Replace("xy", 2, bytes + 1, 2, 0, kAll, nullptr));
    EXPECT_EQ(BytesOf(buffer), "yxyx");
    bytes = static_cast<const char*>(buffer.GetBufferPtr());
    EXPECT_TRUE(buffer.Replace("y", 1, bytes, 4, 0, kAll, nullptr));
    EXPECT_EQ(BytesOf(buffer), "yxyxxyxyxx");
  });
}

TEST(CBufferSearch, ReplacesIntoAFileWhatGrowsTooLarge) {
  const std::string body(GetGlobalSwapSize() - 1, 'a');
  CBuffer buffer(body.data(), body.size());
  EXPECT_TRUE(buffer.Replace(body.data(), 1000, "b", 1, 0, 1, nullptr)) << "no hit in one byte";
  EXPECT_TRUE(Occurrences(buffer, "b", 0, kAll).empty());
  buffer.Overwrite(5, "b", 1);
  std::size_t count = 0;
  EXPECT_TRUE(buffer.Replace("b", 1, "ccc", 3, 0, kAll, &count));
  EXPECT_EQ(count, 1U);
  EXPECT_FALSE(buffer.IsInMemory());
  EXPECT_EQ(BytesOf(buffer), "aaaaaccc" + std::string(body.size() - 6, 'a'));
}

// ---- a file that cannot be read

class CountingVisitor : public AChunkVisitor {
public:
  explicit CountingVisitor(std::size_t chunkSize = 0) : fChunkSize(chunkSize) {}
  void Visit(const void*, std::size_t length, std::size_t, bool&) override { fBytes += length; }
  std::size_t GetChunkSize() override { return fChunkSize; }
  std::size_t Bytes() const { return fBytes; }

private:
  const std::size_t fChunkSize;
  std::size_t fBytes = 0;
};

TEST(CBufferVisit, AsksTheVisitorForTheSizeOfAPiece) {
  class Lengths final : public AChunkVisitor {
  public:
    void Visit(const void*, std::size_t length, std::size_t chunkSize, bool& more) override {
      fLengths.push_back(length);
      EXPECT_EQ(chunkSize, 4U);
      more = fLengths.size() < 3;
    }
    std::size_t GetChunkSize() override { return 4; }
    std::vector<std::size_t> fLengths;
  };
  CBuffer buffer("0123456789", 10);
  ASSERT_TRUE(buffer.SwapOut());
  Lengths all;
  buffer.VisitBuffer(all, 1, kAll);
  EXPECT_THAT(all.fLengths, ElementsAre(4, 4, 1));
  Lengths ended;
  buffer.VisitBuffer(ended, 0, 8);
  EXPECT_THAT(ended.fLengths, ElementsAre(4, 4));
}

TEST(CBufferVisit, ReportsWhatCannotBeRead) {
  CBuffer buffer("0123456789", 10);
  ASSERT_TRUE(buffer.SwapOut());
  const HostInSlot host(Gates{});
  {
    const SwappedDescriptor writing(NameOf(buffer), O_WRONLY);
    CountingVisitor visitor;
    buffer.VisitBuffer(visitor, 0, kAll);
    EXPECT_EQ(visitor.Bytes(), 0U);
  }
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0].message,
            "Error while reading file: errno: 9 - 'Bad file descriptor'");
  EXPECT_EQ(host->fPrinted[0].className + "::" + host->fPrinted[0].function,
            "CBufferFileImpl::VisitBuffer");
  EXPECT_EQ(host->fPrinted[0].file, "Common\\CBufferFileImpl");
  CountingVisitor visitor;
  buffer.VisitBuffer(visitor, 0, kAll);
  EXPECT_EQ(visitor.Bytes(), 10U) << "as soon as it can be read again";
}

TEST(CBufferVisit, ShowsAMebibyteAtATimeToWhoAsksForNoSize) {
  class Lengths final : public AChunkVisitor {
  public:
    void Visit(const void*, std::size_t length, std::size_t chunkSize, bool&) override {
      fLengths.push_back(length);
      fChunkSizes.push_back(chunkSize);
    }
    std::vector<std::size_t> fLengths, fChunkSizes;
  };
  const std::string text((1 << 20) + 5, 'x');
  InBothForms(text, [&](CBuffer& buffer) {
    Lengths all;
    buffer.VisitBuffer(all, 1, kAll);
    if (buffer.IsInMemory()) {
      EXPECT_THAT(all.fLengths, ElementsAre(text.size() - 1)) << "in one piece";
      EXPECT_EQ(all.fChunkSizes, all.fLengths);
    } else {
      EXPECT_THAT(all.fLengths, ElementsAre(1048576, 4));
      EXPECT_THAT(all.fChunkSizes, ElementsAre(1048576, 1048576));
    }
  });
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // end the process themselves
TEST(CBufferVisit, ReportsAPieceThatThereIsNoMemoryFor) {
  if (!std::filesystem::is_directory("/dev/shm")) GTEST_SKIP() << "no file is long enough";
  const std::filesystem::path path = "/dev/shm/tessarin_sparse_" + std::to_string(getpid());
  std::ofstream(path) << "x";
  constexpr std::uintmax_t kMoreThanAddresses = std::uintmax_t{1} << 50;
  std::filesystem::resize_file(path, kMoreThanAddresses);
  {
    const HostInSlot host(Gates{});
    CBuffer buffer(CFSPath(path.string()), false);
    CountingVisitor visitor(kAll);
    buffer.VisitBuffer(visitor, 0, kAll);
    EXPECT_EQ(visitor.Bytes(), 0U);
    ASSERT_EQ(host->fPrinted.size(), 1U);
    EXPECT_EQ(host->fPrinted[0].message, "Error allocating memory in buffer");
    EXPECT_FALSE(buffer.SwapIn());
    EXPECT_EQ(GetBufferPtrSizeLimit(buffer, 1), nullptr) << "no room for a view either";
    EXPECT_EQ(buffer.GetSize(), kMoreThanAddresses);
  }
  std::filesystem::remove(path);
}
#endif

}  // namespace
