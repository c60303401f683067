#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "Common/CRegexVectorHolder.h"

// The contract of a holder's Find in its plainest form: its scanners one after the other, each as a
// matcher of its own.
struct ScannerAnswer {
  bool found = false;
  std::string name;  // with a source, where something is found
  bool operator==(const ScannerAnswer&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const ScannerAnswer& answer) {
  return out << (answer.found ? "'" + answer.name + "'" : "none");
}

// Matcher(pattern).Match(text) gives the texts of the whole match and the groups, or nothing; a
// group that took no part has the empty text.
template <class Matcher>
class ScannersInTurn {
public:
  explicit ScannersInTurn(const CRegexVectorHolder& holder) : fHolder(holder) {
    for (const RegexVectorEntry& entry : holder.Entries()) {
      fMatchers.emplace_back(entry.fScanner->Pattern());
    }
  }

  bool Matches(const std::string& text) const {
    for (const Matcher& matcher : fMatchers) {
      if (matcher.Match(text)) return true;
    }
    return false;
  }

  ScannerAnswer Named(const std::string& text) const {
    for (std::size_t i = 0; i < fMatchers.size(); ++i) {
      const auto groups = fMatchers[i].Match(text);
      if (!groups) continue;
      const RegexVectorEntry& entry = fHolder.Entries()[i];
      const std::vector<std::string>& sources = *entry.fSources;
      if (sources.size() == 1) return {true, sources[0]};
      const std::size_t first = entry.FirstAlternativeGroup();
      for (std::size_t group = first; group < groups->size(); ++group) {
        const bool isNamed = (*groups)[group] == (*groups)[first - 1];
        if (isNamed && group - first < sources.size()) return {true, sources[group - first]};
      }
    }
    return {};
  }

private:
  const CRegexVectorHolder& fHolder;
  std::vector<Matcher> fMatchers;
};
