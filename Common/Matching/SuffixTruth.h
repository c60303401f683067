#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Common/Matching/Program.h"
#include "Common/Matching/Simulation.h"
#include "Common/Matching/Subject.h"

namespace Matching {

// Reads a text from its end, and knows at each place from which states of a forward program the
// rest of the text matches. A look-ahead then is a state like any other: it leads on where its own
// first state does, or where it does not. So whether a text matches is answered in one pass,
// look-aheads in look-aheads included, by the automaton that caches the steps.
//
// A kernel holds the states that consume the byte behind its place and match from there on, sorted.
// kRestart stands for a match that ends here: everywhere with Goal Any, and with Goal Whole where
// the reading begins.
//
// Source: alternating automata; reading backward is what makes them deterministic. The program must
// be free of back-references. Belongs to one thread; keeps the memory that it works in.
class SuffixTruth : public AStepper {
public:
  SuffixTruth(const Program& program, const SyntaxTree& tree, Goal goal, LookAheadRules rules);

  void Begin(Kernel& kernel) override;
  void Step(const Kernel& from, const Boundary& at, unsigned char byte, Kernel& to) override;
  std::uint32_t FirstAccept(const Kernel& from, const Boundary& at) override;

private:
  // The states of a look-ahead, or the last of them: of the program around all.
  struct Part {
    StateId begin = 0;  // the states from here up to and without end
    StateId end = 0;
    StateId start = 0;
    StateId accept = 0;
    bool hasOwnBegin = false;  // a look-ahead that holds by other rules where it begins
  };

  void AddPart(StateId begin, StateId end, StateId start);
  void IndexWays();
  void Evaluate(const Kernel& from, const Boundary& at);
  // Marks the states of a part that lead to the kernel's or, unless only those count, to an end.
  void Spread(const Part& part, const Kernel& from, const Boundary& at, bool mayEnd,
              StateSet& truth, std::vector<StateId>* found);
  [[nodiscard]] bool LeadsOn(const State& state, const Boundary& at) const;
  // States in front of one, by what they do: each list is a piece of fBefore.
  struct Before {
    std::uint32_t begin = 0;
    std::uint32_t split = 0;  // those that consume nothing stand before it, those that do behind
    std::uint32_t end = 0;
  };

  const Program& fProgram;
  const SyntaxTree& fTree;
  const Goal fGoal;
  const LookAheadRules fRules;
  std::vector<Part> fParts;  // inner ones before the ones around them
  std::vector<Before> fBeforeOf;
  std::vector<StateId> fBefore;

  StateSet fTruth;
  StateSet fTruthAtBegin;
  std::vector<StateId> fTrue;  // all of fTruth
  std::vector<StateId> fStack;
  std::vector<bool> fHolds;  // by look-ahead
};

}  // namespace Matching
