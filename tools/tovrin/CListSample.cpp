#include "tools/tovrin/CListSample.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <unordered_map>

#include "Common/CRegexException.h"
#include "Common/CUnicodeString.h"

namespace RefHost {
namespace {

using Clock = std::chrono::steady_clock;

double NanosecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

std::vector<std::string> ReadTexts(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> texts;
  for (std::string line; std::getline(file, line);) {
    if (line.ends_with('\r')) line.pop_back();
    texts.push_back(std::move(line));
  }
  if (texts.empty()) throw std::runtime_error(path + ": cannot be read, or has no line");
  return texts;
}

}  // namespace

CListSample::CListSample(const CRegexVectorHolder& holder, const std::string& path)
    : fTexts(ReadTexts(path)) {
  Measure(holder);
  CountRuns(holder);
}

// A text that is too much for an expression is asked about once, for that takes long enough.
void CListSample::Measure(const CRegexVectorHolder& holder) {
  fTimes.assign(fTexts.size(), 0);
  fIsTooMuch.assign(fTexts.size(), false);
  for (int round = 0; round <= kRounds; ++round) {
    for (std::size_t i = 0; i < fTexts.size(); ++i) {
      if (fIsTooMuch[i]) continue;
      bool matched = false;
      const auto begin = Clock::now();
      try {
        matched = holder.Find(fTexts[i], nullptr);
      } catch (const CRegexException&) {
        fIsTooMuch[i] = true;
      }
      const double time = NanosecondsSince(begin);
      if (round == 0) {
        fFirstPass += time;
        fMatched += matched ? 1 : 0;
      }
      fTimes[i] = round <= 1 ? time : std::min(fTimes[i], time);
    }
  }
}

void CListSample::CountRuns(const CRegexVectorHolder& holder) {
  std::unordered_map<std::string, Runs> runs;
  for (std::size_t i = 0; i < fTexts.size(); ++i) {
    if (fIsTooMuch[i]) continue;
    try {
      holder.VisitRuns(fTexts[i], [&](const std::string& element, bool matched) {
        Runs& own = runs[element];
        ++(matched ? own.matched : own.inVain);
      });
    } catch (const CRegexException&) {
      fIsTooMuch[i] = true;  // for an expression behind the one that matched
    }
  }
  for (auto& [element, own] : runs) {
    own.element = element;
    fRuns.push_back(std::move(own));
  }
  std::sort(fRuns.begin(), fRuns.end(), [](const Runs& a, const Runs& b) {
    return a.inVain != b.inVain ? a.inVain > b.inVain : a.element < b.element;
  });
}

std::string CListSample::Describe() const {
  std::vector<double> sorted = fTimes;
  std::sort(sorted.begin(), sorted.end());
  const auto worst = std::max_element(fTimes.begin(), fTimes.end());
  const std::string& text = fTexts[static_cast<std::size_t>(worst - fTimes.begin())];
  std::string words = fmt::format(
      "sample: {} texts, {} match; the first pass took {:.0f} ns a text\n"
      "a text takes {:.0f} ns (median), {:.0f} ns (99.9 %), {:.0f} ns at worst, for '{}'{}\n",
      fTexts.size(), fMatched, fFirstPass / static_cast<double>(fTexts.size()),
      sorted[sorted.size() / 2], sorted[(sorted.size() - 1) * 999 / 1000], *worst,
      text.substr(0, kMostShown),
      text.size() > kMostShown ? fmt::format(" and {} bytes more", text.size() - kMostShown) : "");
  const auto tooMuch = std::count(fIsTooMuch.begin(), fIsTooMuch.end(), true);
  if (tooMuch > 0) words += fmt::format("{} texts were too much for an expression\n", tooMuch);
  return words + DescribeRuns();
}

std::string CListSample::DescribeRuns() const {
  if (fRuns.empty() || fRuns.front().inVain == 0) return "no element was run in vain\n";
  std::string words = "run most often in vain (and with a match):\n";
  for (std::size_t i = 0; i < fRuns.size() && i < kMostRuns && fRuns[i].inVain > 0; ++i) {
    words += fmt::format("  {} ({})\t{}\n", fRuns[i].inVain, fRuns[i].matched, fRuns[i].element);
  }
  return words;
}

}  // namespace RefHost
