#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Matching/LiteralPool.h"

namespace Matching {

// Which of several literals is a text to be looked for by? The one that is least likely to turn up
// (ChanceOf), and of those that many elements of a list could share, one that few have taken yet:
// where it stands, all that took it are confirmed. Only orders choices; no answer depends on it.
//
// Literals are folded, and not empty.
class LiteralChoice {
public:
  // What a test can do without.
  struct Options {
    bool useChance;  // else the longest is taken
    bool useLoad;
  };

  LiteralChoice() : LiteralChoice({true, true}) {}
  explicit LiteralChoice(const Options& options) : fOptions(options) {}

  // What a literal costs that one more element takes, up to 1 where nobody has taken it yet.
  [[nodiscard]] double CostOf(std::string_view literal) const;
  // The same for any of several.
  [[nodiscard]] double CostOfAny(const std::vector<std::string>& literals) const;
  // The index of the best of several, at least one.
  [[nodiscard]] std::uint32_t BestOf(const std::vector<std::string>& literals) const;

  void Take(std::string_view literal);

private:
  Options fOptions;
  LiteralPool fTaken;
  std::vector<std::uint32_t> fLoads;  // of those, by their numbers
};

}  // namespace Matching
