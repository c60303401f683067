#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Common/Matching/Program.h"
#include "Common/Matching/Subject.h"

namespace Matching {

// What a run over a text is after.
enum class Goal : std::uint8_t {
  Whole,    // does the whole text match
  Any,      // does any part of it match
  First,    // where does the match that the order of the ways prefers end
  Longest,  // how far does any way reach
  Every,    // at which places does some match end
};

// How look-aheads see the place at which they are asked.
struct LookAheadRules {
  // Contract: a look-ahead takes its own beginning for the beginning of the text, unless bytes in
  // front of the text count.
  bool hasPrevious = false;
  // The operation's flag for empty matches goes for look-aheads, too.
  bool refuseEmpty = false;
};

// The states in which a program may be at one place, which it must leave by consuming, by an
// assertion or by accepting, in the order in which they are tried; in any order where that is of no
// account. kRestart stands for a match that begins here.
struct Kernel {
  std::vector<StateId> states;
  bool atEdge = false;     // no byte was consumed yet, and the text ends on that side
  bool afterWord = false;  // the byte consumed last is a word byte; false without word boundaries
  bool isFresh = false;    // no byte was consumed yet, and an empty match is not wanted
  bool matched = false;    // a match ended at the place before the byte consumed last
};

inline constexpr StateId kRestart = 0xFFFFFFFF;
inline constexpr std::uint32_t kNoAccept = 0xFFFFFFFF;

// The empty set of states of a program, emptied in one step.
class StateSet {
public:
  explicit StateSet(std::size_t size) : fMarks(size, 0) {}

  void Clear() {
    if (++fMark == 0) {
      fMarks.assign(fMarks.size(), 0);
      fMark = 1;
    }
  }
  // False when it is there already.
  bool Insert(StateId id) {
    if (fMarks[id] == fMark) return false;
    fMarks[id] = fMark;
    return true;
  }
  [[nodiscard]] bool Contains(StateId id) const { return fMarks[id] == fMark; }

private:
  std::vector<std::uint32_t> fMarks;
  std::uint32_t fMark = 1;
};

// One step of a program at a time: what the automaton caches, and what runs where there is nothing
// cached. Belongs to one thread; keeps the memory that it works in. What a step leaves behind that
// was broken off by a want of memory is of no account to the next one.
class AStepper {
public:
  AStepper() = default;
  AStepper(const AStepper&) = delete;
  AStepper& operator=(const AStepper&) = delete;
  virtual ~AStepper() = default;

  // What holds in front of the first byte. The flags of the kernel stay.
  virtual void Begin(Kernel& kernel) = 0;
  // Consumes the byte; `at` is the boundary in front of it.
  virtual void Step(const Kernel& from, const Boundary& at, unsigned char byte, Kernel& to) = 0;
  // The smallest number of an Accept whose match ends here, nothing more being consumed; or
  // kNoAccept.
  virtual std::uint32_t FirstAccept(const Kernel& from, const Boundary& at) = 0;
};

// Follows all ways of a program at once.
class Simulation : public AStepper {
public:
  Simulation(const Program& program, const SyntaxTree& tree, Goal goal, bool isAnchored)
      : fProgram(program),
        fTree(tree),
        fGoal(goal),
        fIsAnchored(isAnchored),
        fResolved(program.states.size()),
        fTaken(program.states.size()) {}

  void Begin(Kernel& kernel) override;
  void Step(const Kernel& from, const Boundary& at, unsigned char byte, Kernel& to) override {
    Step(from, at, byte, to, nullptr, 0);
  }
  std::uint32_t FirstAccept(const Kernel& from, const Boundary& at) override {
    return FirstAccept(from, at, nullptr, 0);
  }

  // The same for programs with look-ahead, which ask the table what holds at place pos.
  void Step(const Kernel& from, const Boundary& at, unsigned char byte, Kernel& to,
            const LookAheadTable* table, std::size_t pos);
  std::uint32_t FirstAccept(const Kernel& from, const Boundary& at, const LookAheadTable* table,
                            std::size_t pos);

private:
  const std::vector<StateId>& Resolve(const Kernel& from, const Boundary& at,
                                      const LookAheadTable* table, std::size_t pos);
  void Take(StateId id, Kernel& to);
  [[nodiscard]] bool OrderMatters() const { return fGoal == Goal::First; }

  const Program& fProgram;
  const SyntaxTree& fTree;
  const Goal fGoal;
  const bool fIsAnchored;
  StateSet fResolved;
  StateSet fTaken;
  bool fIsCut = false;  // what would be taken now comes behind a match, and is not wanted
  std::vector<StateId> fStack;
  std::vector<StateId> fStates;
};

}  // namespace Matching
