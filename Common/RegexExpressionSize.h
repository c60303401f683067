#pragma once

#include <cstdint>
#include <string_view>

// How deep the standard library's engine recurses over an expression, estimated from its text and
// never too low. The engine checks nothing itself, and a stack that overflows ends the process.
struct RegexExpressionSize {
  // The deepest path of the compiler's recursive descent.
  std::uint64_t openTerms = 0;   // one frame set for every term that stands before another
  std::uint64_t openGroups = 0;  // groups on that path

  // A count or a back-reference is a number for which the library's arithmetic has no room.
  bool hasHugeNumber = false;

  // Look-aheads one within the other: each runs a matcher of its own, with memory for every state.
  std::uint64_t lookAheads = 0;

  // States that a match can run through, one within the other, without looking at the text.
  std::uint64_t emptySteps = 0;
};

// Reads the expression as the library's scanner does, without recursion. What comes behind a fault
// does not count: the compiler stops there as well.
RegexExpressionSize MeasureExpression(std::string_view expression);
