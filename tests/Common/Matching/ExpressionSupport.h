#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "Common/Matching/Expression.h"

// The compiled expression; null when it is refused.
inline std::unique_ptr<Matching::Expression> Compile(
    std::string_view pattern,
    const Matching::Expression::Options& options = Matching::Expression::Options()) {
  auto result = Matching::Expression::Compile(pattern, options);
  auto* const expression = std::get_if<std::unique_ptr<Matching::Expression>>(&result);
  return expression == nullptr ? nullptr : std::move(*expression);
}

// The groups as the public files write them.
inline std::string Spans(const Matching::Captures& captures) {
  std::string text;
  for (const auto& span : captures) {
    if (!text.empty()) text += ' ';
    text += span.matched ? std::to_string(span.begin) + ':' + std::to_string(span.end) : "-";
  }
  return text;
}

inline std::string Repeated(std::string_view unit, std::size_t count) {
  std::string text;
  text.reserve(unit.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += unit;
  return text;
}
