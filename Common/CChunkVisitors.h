#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Common/CUseCounted.h"
#include "Common/IUnicodeString.h"
#include "Common/SelvaneIVariant.h"

// Looks at the bytes of a buffer piece by piece, wherever they are kept.
//
// Every piece but the last has the same size: who counts by pieces knows where they begin.
class AChunkVisitor {
public:
  // In this order, as every binary that was built against them expects.
  // The bytes live for the call. more tells whether to go on.
  virtual void Visit(const void* data, std::size_t length, std::size_t chunkSize, bool& more) = 0;
  virtual std::size_t GetChunkSize() { return 0; }  // 0: kDefaultChunkSize
  virtual ~AChunkVisitor() = default;

  static constexpr std::size_t kDefaultChunkSize = std::size_t{1} << 20;
};

// Finds the first of several byte patterns to end, over the borders of the pieces: each pattern has
// an automaton after Knuth, Morris and Pratt, all of them step through the bytes together, and
// their states outlive a piece. Of two that end with one byte, the first in the list wins.
//
// One search on one thread. The bytes of the patterns belong to the caller; strings of a list are
// kept alive.
//
// Contract: an empty pattern is found at the first byte, under index 0 wherever it stands.
// Contract: a hit forgets all that other patterns had matched so far.
class CSearchVisitor : public AChunkVisitor, public CUseCounted {
public:
  // The lengths are a list of integers, one a pattern; a negative one ends the list. What is no
  // such list is reported, and leaves the visitor invalid.
  CSearchVisitor(const void* const* patterns, Selvane::IVariant* lengths);
  // A list of strings. One in UTF-8, ASCII or of raw bytes is taken as it is, any other as UTF-8.
  explicit CSearchVisitor(Selvane::IVariant* patterns);

  bool IsValid() const { return fValid; }

  void Visit(const void* data, std::size_t length, std::size_t chunkSize, bool& more) override;
  // For another search. What the patterns have matched so far stays.
  void Reset();
  // Nothing but found is written when there is no hit. The offset is from the first byte visited.
  void GetResult(bool& found, int& index, std::size_t& offset) const;
  std::uint64_t GetPatternLength(int index) const;

private:
  struct Searcher {
    std::vector<std::uint64_t> prefix;  // longest proper prefix that ends here, for each byte
    std::uint64_t length = 0;
    const unsigned char* pattern = nullptr;
    std::string owned;                        // the bytes, where they had to be converted
    CUsePtr<Selvane::IUnicodeString> holder;  // keeps the bytes of a list's string alive
    std::uint64_t state = 0;                  // bytes of the pattern matched so far

    void BuildPrefix();
    bool Step(unsigned char byte);  // true when the pattern is complete
    // Steps until the pattern is complete, or nothing of it is matched any more; where that was.
    std::size_t Run(const unsigned char* data, std::size_t from, std::size_t size);
  };
  // 64 searchers: which of them a byte starts, and which are under way.
  struct Group {
    std::array<std::uint64_t, 256> starts{};
    std::uint64_t active = 0;
  };
  struct Hit {
    int index;
    std::uint64_t distance;  // from the beginning of the piece
    bool isBefore;           // the match began so far in front of the piece
  };

  void AddSearcher(Searcher searcher);
  void AddBeginning(const Searcher& searcher, std::size_t position);
  void Prepare();
  bool Search(const unsigned char* data, std::size_t length, Hit& hit);
  bool SearchOnly(const unsigned char* data, std::size_t length, Hit& hit);
  bool StepAll(unsigned char byte, std::size_t& winner);
  std::size_t SkipIdle(const unsigned char* data, std::size_t from, std::size_t length) const;
  Hit MakeHit(std::size_t winner, std::size_t consumed);

  std::vector<Searcher> fSearchers;  // in the order of the list
  std::vector<Group> fGroups;
  // For each of the first bytes of a match, which patterns it may be of: pattern i has bit i % 64.
  static constexpr std::size_t kLookAhead = 3;
  std::array<std::array<std::uint64_t, 256>, kLookAhead> fBeginnings{};
  int fOnlyStart = -1;            // the byte with which all patterns begin, when there is just one
  std::size_t fEmptyPattern = 0;  // position of the first empty one; the list's size for none
  std::size_t fActiveGroups = 0;  // groups with a pattern under way
  std::uint64_t fFoundOffset = ~std::uint64_t{0};
  std::int32_t fFoundIndex = -1;
  std::uint32_t fChunkIndex = 0;  // pieces visited without a hit
  bool fValid = false;
};

// Hands over all hits of a search, one behind the other, in one pass over a range of a buffer: a
// hit leaves the search as fresh as a new one, so going on behind it is starting again there.
//
// The buffer is visited from the range's start on; where the range ends is decided here. Hits end
// within it and do not overlap. An empty pattern is found once, and ends the visit.
class AHitVisitor : public AChunkVisitor {
public:
  void Visit(const void* data, std::size_t length, std::size_t chunkSize, bool& more) final;
  std::uint64_t GetPosition() const { return fPosition; }  // all before it was looked at

protected:
  struct Hit {
    std::uint64_t offset;  // in the buffer
    std::uint64_t length;
    int index;  // of the pattern
  };

  AHitVisitor(CSearchVisitor& search, std::uint64_t start, std::uint64_t length)
      : fSearch(search), fPosition(start), fRemaining(length) {}
  virtual bool OnHit(const Hit& hit) = 0;  // false ends the visit
  void ExtendRange(std::uint64_t length);  // moves the end on

private:
  std::size_t SearchOne(const char* bytes, std::size_t length);

  CSearchVisitor& fSearch;
  std::uint64_t fPosition;
  std::uint64_t fRemaining;  // of the range
};
