#include "tools/tovrin/CListFile.h"

#include <fmt/core.h>

#include <regex>

#include "Common/CRegex.h"
#include "Common/CRegexShared.h"
#include "Common/CVariant.h"
#include "Common/Matching/Parser.h"
#include "tools/tovrin/CLineBlocks.h"
#include "tools/tovrin/SourceText.h"

namespace RefHost {

CListFile::CListFile(const std::string& path, bool isAnchored) : fPath(path) {
  const std::string source = CleanSource(ReadSource(path));
  std::size_t number = 0;
  ForEachLine(source, [&](std::string_view line) {
    ++number;
    if (line.find_first_not_of(" \t") == std::string_view::npos || line.front() == '#') return true;
    std::string text(line);
    if (isAnchored) text = "regex(^" + text + "$)";
    fElements.push_back({std::move(text), number});
    return true;
  });
}

std::unique_ptr<const CRegexVectorHolder> CListFile::Build() const {
  const auto value = MakeUseCounted<CVariant>(VariantType::RegexList);
  value->Reserve(fElements.size());
  for (const ListElement& element : fElements) value->AddToList(MakeText(element.text).Get());
  return std::make_unique<const CRegexVectorHolder>(value);
}

std::string FaultOf(const std::string& element) {
  std::string expression(CRegex::StripRegexForm(element));
  if (CRegex::IsWildcardForm(element)) CRegex::GlobToExpression(element, true, expression);
  const auto parsed = Matching::Parse(WithoutCaseMarks(expression));
  return parsed.error ? parsed.error->message : "";
}

std::string DescribeFaults(const CListFile& list) {
  std::string faults;
  for (const ListElement& element : list.Elements()) {
    const std::string fault = FaultOf(element.text);
    if (fault.empty()) continue;
    faults += fmt::format("{}:{}: {}: {}\n", list.Path(), element.line, element.text, fault);
  }
  if (faults.empty()) {
    faults = fmt::format("{}: elements that compile alone do not compile together\n", list.Path());
  }
  return faults;
}

}  // namespace RefHost
