#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Common/Matching/Program.h"
#include "Common/Matching/Simulation.h"
#include "Common/Matching/Subject.h"
#include "Common/Matching/SuffixTruth.h"

namespace Matching {

// What a backward reading knew at each place of a stretch of text: the states of a program from
// which the rest of the stretch matches. A long stretch is read once as a whole, which leaves
// marks, and then block by block as its places are asked for, so memory stays small.
//
// Belongs to one thread; keeps the memory that it works in. What it was read from must outlive it.
class ATrail {
public:
  // A block begins at a multiple of so many places from the beginning.
  static constexpr std::size_t kGrain = 64;

  ATrail() = default;
  ATrail(const ATrail&) = delete;
  ATrail& operator=(const ATrail&) = delete;
  virtual ~ATrail() = default;

  // The states that consume the byte at a place and lead on from there, in ascending order. The
  // place is not the end of the stretch. Fast when places are asked for one after the other.
  virtual std::span<const StateId> At(std::size_t pos) = 0;
  // Goal Any: the first place at or behind this one, which is not the beginning of the stretch, at
  // which a match begins; or kNowhere.
  virtual std::size_t NextMatch(std::size_t pos) = 0;

  [[nodiscard]] std::size_t Begin() const { return fBegin; }

protected:
  std::size_t fBegin = 0;
  std::size_t fEnd = 0;
};

// A trail for Goal Any that is read step by step, without an automaton: for those whose automaton
// does not stay within its budget.
class SteppedTrail : public ATrail {
public:
  SteppedTrail(const Program& program, const SyntaxTree& tree, LookAheadRules rules)
      : fStepper(program, tree, Goal::Any, rules) {}

  // Reads the text from its end to subject.from. False when what must be kept of so large a program
  // is too much: then no place may be asked for.
  bool Read(const Subject& subject);

  std::span<const StateId> At(std::size_t pos) override;
  std::size_t NextMatch(std::size_t pos) override;

private:
  static constexpr std::size_t kMostPlaces = std::size_t{1} << 14;  // of a block
  static constexpr std::size_t kMostIds = std::size_t{1} << 21;     // about so many in a block
  static constexpr std::size_t kMostMarkIds = std::size_t{1} << 24;

  // What held at a place, from which the block below is read.
  struct Mark {
    std::size_t pos;
    Kernel kernel;
  };
  // The places below a mark, down to the next one; the last place first.
  struct Block {
    std::size_t mark = kNowhere;
    std::vector<StateId> ids;
    std::vector<std::size_t> ends;  // in the ids, a place each
    std::vector<bool> matched;      // whether a match begins behind the place

    [[nodiscard]] std::span<const StateId> At(std::size_t place) const {
      const std::size_t first = place == 0 ? 0 : ends[place - 1];
      return std::span(ids).subspan(first, ends[place] - first);
    }
  };

  void Step(std::size_t pos);
  const Block& BlockOf(std::size_t pos);
  void ReadBlock(std::size_t mark, Block& block);

  SuffixTruth fStepper;
  Subject fSubject;
  Kernel fKernel;  // of the reading
  Kernel fNext;
  std::vector<Mark> fMarks;  // from the end on
  // The one asked last and the one before: ways of look-aheads go to and fro between two.
  Block fBlocks[2];
  std::size_t fLast = 0;
};

}  // namespace Matching
