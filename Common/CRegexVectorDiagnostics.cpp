#include "Common/CRegexVectorHolder.h"
#include "Common/PrefixSuffixCollector.h"

namespace {

using Lines = std::vector<std::string>;

std::string Count(std::size_t count) {
  return "#" + std::to_string(count) + " entries:";
}

void Append(Lines& lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
}

}  // namespace

// Prints each collector after the title; numbered from 1 in the order of the build.
template <class Print>
void CRegexVectorHolder::DumpCollectors(Lines& lines, const char* title, Print print) const {
  lines.clear();
  if (!fCollectors) return;
  lines.emplace_back(title);
  for (std::size_t i = 0; i < fCollectors->size(); ++i) {
    print(*(*fCollectors)[i], "Collector #" + std::to_string(i + 1) + ":");
  }
}

// A line for each row that the collector has.
template <class RowsOf, class LineOf>
void CRegexVectorHolder::DumpRows(Lines& lines, const char* title, RowsOf rowsOf,
                                  LineOf lineOf) const {
  DumpCollectors(
      lines, title, [&](const PrefixSuffixCollector& collector, const std::string& name) {
        const auto& rows = rowsOf(collector);
        lines.push_back(name + (rows.empty() ? " #0 entries!" : " " + Count(rows.size())));
        for (const auto& row : rows) lines.push_back(lineOf(row));
      });
}

void CRegexVectorHolder::DumpTimeMeasurements(Lines& lines) const {
  DumpCollectors(lines, "Time Measurements:",
                 [&](const PrefixSuffixCollector& collector, const std::string& name) {
                   lines.push_back(name);
                   Append(lines, collector.Measurements());
                 });
}

void CRegexVectorHolder::DumpScanners(Lines& lines) const {
  lines.assign(1, "Generated merged scanners: " + Count(fEntries.size()));
  for (const RegexVectorEntry& entry : fEntries) {
    if (entry.fScanner) lines.push_back(entry.fScanner->Pattern());
  }
}

void CRegexVectorHolder::DumpExtracted(Lines& lines) const {
  DumpRows(
      lines, "Extracted [prefix, suffix] elements:",
      [](const PrefixSuffixCollector& collector) -> const auto& { return collector.Groups(); },
      [](const PrefixGroup& group) {
        return "'" + group.Prefix() + "' / '" + group.Suffix() + "'";
      });
}

void CRegexVectorHolder::DumpRadixTrees(Lines& lines) const {
  DumpCollectors(lines, "Radix Tree data:",
                 [&](const PrefixSuffixCollector& collector, const std::string& name) {
                   if (collector.Tree().IsEmpty()) {
                     lines.push_back(name + " no data!");
                     return;
                   }
                   Lines list;
                   collector.Tree().GetList(list);
                   lines.push_back(name + " as list: " + Count(list.size()));
                   Append(lines, list);
                   lines.push_back(name + " as tree:");
                   collector.Tree().GetTree(lines);
                 });
}

void CRegexVectorHolder::DumpSplitted(Lines& lines) const {
  DumpRows(
      lines, "Splitted regexes:", [](const PrefixSuffixCollector& collector) -> const auto& {
        return collector.TokenLists();
      },
      [](const std::vector<RegexToken>& tokens) {
        std::string line;
        for (const RegexToken& token : tokens) {
          line.append(RegexTokenKindName(token.kind)).append(":").append(token.text).append(", ");
        }
        return line;
      });
}

void CRegexVectorHolder::DumpOriginal(Lines& lines) const {
  DumpRows(
      lines, "Original regexes:", [](const PrefixSuffixCollector& collector) -> const auto& {
        return collector.Inputs();
      },
      [](const RegexWithSource& input) { return input.fExpression; });
}
