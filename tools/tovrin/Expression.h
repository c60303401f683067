#pragma once

#include <string>
#include <vector>

#include "tools/tovrin/SourceText.h"

namespace RefHost {

// What was written, before any name is looked up. Nests at most kMaximumDepth deep, which the
// parser sees to, so whoever walks it may recurse.
struct Expression {
  enum class Kind {
    Text,      // text
    Number,    // number
    Boolean,   // truth
    Vector,    // parts are the elements
    Variable,  // text is the name
    Call,      // text is the name, parts are the arguments
    And,       // parts, two or more
    Or,        // parts, two or more
    Not,       // one part
  };

  Kind kind = Kind::Boolean;
  Position where;
  std::string text;
  double number = 0;
  bool truth = false;
  std::vector<Expression> parts;
};

inline constexpr std::size_t kMaximumDepth = 200;

// `let NAME = EXPR`, or an expression alone, whose name is empty.
struct Statement {
  Position where;
  std::string name;
  Expression value;
};

// `when EXPR then "verdict";`, or `otherwise "verdict";`, whose condition is `true`.
struct Rule {
  Position where;
  Expression condition;
  std::string verdict;
};

// One clause of a rules file: a `let`, or a rule.
struct Clause {
  bool isRule = false;
  Statement let;
  Rule rule;
};

}  // namespace RefHost
