#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Common/CRegexVectorHolder.h"

namespace RefHost {

// What a list costs on real texts, a line each: how the time is spread over them, and which
// elements were run most often in vain.
class CListSample {
public:
  // Asks the list about every line, several times. Throws std::runtime_error that names the file
  // when it cannot be read or has no line.
  CListSample(const CRegexVectorHolder& holder, const std::string& path);

  std::string Describe() const;

private:
  struct Runs {
    std::string element;
    std::size_t inVain = 0;
    std::size_t matched = 0;
  };

  void Measure(const CRegexVectorHolder& holder);
  void CountRuns(const CRegexVectorHolder& holder);
  std::string DescribeRuns() const;

  static constexpr int kRounds = 3;  // behind the first pass; the least of their times counts
  static constexpr std::size_t kMostRuns = 10;    // elements named
  static constexpr std::size_t kMostShown = 200;  // bytes of the worst text

  std::vector<std::string> fTexts;
  std::size_t fMatched = 0;
  double fFirstPass = 0;         // nanoseconds for all texts, nothing being learnt before
  std::vector<double> fTimes;    // nanoseconds, by text
  std::vector<bool> fIsTooMuch;  // for an expression, by text
  std::vector<Runs> fRuns;       // most often in vain first
};

}  // namespace RefHost
