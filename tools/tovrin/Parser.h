#pragma once

#include <string_view>
#include <vector>

#include "tools/tovrin/Expression.h"

namespace RefHost {

// The two texts that people write, over one grammar of expressions:
//
//   statements  = statement { ";" [ statement ] }
//   statement   = "let" NAME "=" expression | expression
//   rules       = { clause ";" }
//   clause      = "let" NAME "=" expression | "when" expression "then" TEXT | "otherwise" TEXT
//   expression  = both { "or" both }
//   both        = negation { "and" negation }
//   negation    = "not" negation | primary
//   primary     = TEXT | NUMBER | "true" | "false" | "(" expression ")" | "[" [ list ] "]"
//               | NAME "(" [ list ] ")" | NAME
//   list        = expression { "," expression }
//
// Both throw CSourceError with the place of the first token that does not fit.

// At least one statement.
std::vector<Statement> ParseStatements(std::string_view source);

// At least one rule; nothing stands behind `otherwise`.
std::vector<Clause> ParseRules(std::string_view source);

}  // namespace RefHost
