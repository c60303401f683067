#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Common/Matching/ByteSet.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

using StateId = std::uint32_t;

enum class Op : std::uint8_t {
  Bytes,      // consumes one byte out of set `value`, then next
  Split,      // next, and if that leads to no match, other
  Jump,       // next
  Save,       // writes the position into slot `value`, then next
  LineBegin,  // the assertions go to next when they hold
  LineEnd,
  WordBoundary,
  NotWordBoundary,
  LookAhead,      // look-ahead `value` holds here
  NotLookAhead,   // it does not
  BackReference,  // consumes what group `value` holds, then next
  Accept,         // value: which of several expressions has come to its end
};

struct State {
  Op op = Op::Accept;
  bool isLoop = false;   // Split: one of its ways enters the body of a repetition
  bool isGreedy = true;  // Split with isLoop: that way is next, else other
  std::uint32_t value = 0;
  StateId next = 0;
  StateId other = 0;  // Split only

  [[nodiscard]] bool IsAssertion() const { return op >= Op::LineBegin && op <= Op::NotLookAhead; }
};

// The part of a program that one look-ahead runs; it ends in an Accept of its own. The parts stand
// one behind the other, and behind them what is around all.
struct LookAheadPart {
  StateId start = 0;
  StateId end = 0;  // behind its last state
  // The groups inside, those of look-aheads inside included: from first up to and without end.
  std::uint32_t firstGroup = 0;
  std::uint32_t endGroup = 0;

  [[nodiscard]] bool HasGroups() const { return firstGroup < endGroup; }
};

// An automaton: what one direction of one expression compiles to. States are tried in the order of
// their ways, which is the order in which the standard library tries them.
//
// Read-only once built; any thread may run it.
struct Program {
  std::vector<State> states;
  StateId start = 0;
  // Look-aheads by number, inner ones before the ones around them. Only forward programs have them.
  std::vector<LookAheadPart> lookAheads;
  bool hasAssertions = false;
  bool hasWordBoundaries = false;
};

enum class Direction : std::uint8_t { Forward, Backward };

// The look-ahead nodes of a tree by number, inner ones before the ones around them.
class LookAheadNumbers {
public:
  explicit LookAheadNumbers(const SyntaxTree& tree);

  [[nodiscard]] const std::vector<NodeId>& Nodes() const { return fNodes; }
  [[nodiscard]] std::uint32_t Of(NodeId id) const { return fNumbers.at(id); }

private:
  std::vector<NodeId> fNodes;
  std::unordered_map<NodeId, std::uint32_t> fNumbers;
};

// The program of the tree below root, with positions saved and look-aheads compiled in when it runs
// forward. Backward it accepts what the forward one accepts, read from the last byte to the first,
// and saves nothing.
//
// Repetitions with counts are written out, so the size is bounded by the limit on states.
[[nodiscard]] Program CompileProgram(const SyntaxTree& tree, NodeId root,
                                     const LookAheadNumbers& lookAheads, Direction direction);

// The program of several expressions at once: the Accept of each has its number in `value`. They
// hold neither groups nor look-aheads.
[[nodiscard]] Program CompileMany(const SyntaxTree& tree, const std::vector<NodeId>& roots);

// A program that needs no counters. The standard library lets a repetition run twice, and no third
// time, without moving on; which captures and which end of a match an expression like "(|a)*" has
// depends on it. Here every way through such passes is written out as states of its own, so that an
// engine may treat two visits of one state at one place as the same.
//
// Nothing when the program would grow beyond reason, as it does for deep nests of such repetitions.
[[nodiscard]] std::optional<Program> UnrollEmptyPasses(const Program& program);

// Bytes that no set of the tree tells apart, numbered; word bytes and others are told apart too.
struct ByteClasses {
  std::array<std::uint8_t, 256> classOf{};
  std::uint32_t count = 1;                  // 1 to 256
  std::array<std::uint8_t, 256> example{};  // a byte of each class
};

[[nodiscard]] ByteClasses ClassifyBytes(const SyntaxTree& tree);

}  // namespace Matching
