// Fuzz target for CRegex: any bytes are an expression, a wildcard, a text and a format, and none of
// them ends the process.
//
// Input: expression, text and format, each on a line; what is missing is empty. With clang it runs
// under libFuzzer (preset "fuzz"), otherwise ctest replays the corpus in fuzz/corpus/cregex.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>
#include <string_view>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"

namespace {

// Ends the process where a sanitizer or libFuzzer sees it, naming the property that broke.
void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "property failed: %s\n", property);
  std::abort();
}

std::string_view TakeLine(std::string_view& input) {
  const std::size_t end = input.find('\n');
  const std::string_view line = input.substr(0, end);
  input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
  return line;
}

void CheckCaptures(const CRegexCaptures& captures, std::string_view text) {
  const std::string_view whole = captures[0].Text();
  Require(captures.Prefix().size() + whole.size() + captures.Suffix().size() == text.size(),
          "prefix, match and suffix are the text");
  for (const CRegexCapture& capture : captures) {
    if (!capture.matched) continue;
    Require(text.data() <= capture.text.data(), "a capture begins in the text");
    Require(capture.text.data() + capture.text.size() <= text.data() + text.size(),
            "a capture ends in the text");
  }
}

void CheckOperations(const CRegex& regex, std::string_view text, std::string_view format) {
  CRegexCaptures captures;
  const bool matches = regex.MatchCaptures(text, captures);
  if (matches) CheckCaptures(captures, text);
  if (!regex.IsWildcard()) Require(regex.Matches(text) == matches, "both matches agree");

  const bool found = regex.SearchCaptures(text, captures);
  Require(regex.Search(text) == found, "both searches agree");
  Require(found || !matches, "what matches is found");
  if (found) {
    CheckCaptures(captures, text);
    Require(captures.Size() == regex.GetCaptureCount() + 1, "every group has a capture");
  }

  CRegexScan scan;
  regex.ScanAll(text, scan);
  std::size_t count = 0;
  for (std::string_view match; scan.Next(match);) ++count;
  Require((count > 0) == found, "a walk finds what a search finds");
  Require(count <= 2 * text.size() + 1, "a walk makes progress");

  std::string out;
  regex.Replace(text, format, out, true);
  if (!found) Require(out == text, "what is not found is not replaced");
}

// The engine may give up, in one of two ways, and the object stays as it was.
void CheckRegex(const CRegexPtr& regex, std::string_view text, std::string_view format) {
  if (!regex) return;
  try {
    CheckOperations(*regex, text, format);
  } catch (const CRegexException&) {
  } catch (const std::regex_error&) {
  }
}

// A fast path and the engine differ in nothing but line ends.
void CheckFastPath(const CRegexPtr& wildcard, std::string_view text) {
  if (!wildcard || wildcard->FastMode() == CRegexFastMode::FastNone) return;
  if (text.find_first_of("\n\r") != std::string_view::npos) return;
  const CRegexPtr clone = wildcard->Clone();
  if (!clone) return;
  try {
    Require(clone->Matches(text) == wildcard->Matches(text), "the fast path answers as the engine");
  } catch (const CRegexException&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 1024) return 0;  // longer expressions cost time and reach no new code

  std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string_view expression = TakeLine(input);
  const std::string_view text = TakeLine(input);
  const std::string_view format = input;

  CheckRegex(CRegex::Create(expression, false), text, format);
  const CRegexPtr wildcard = CRegex::Create(expression, true);
  CheckRegex(wildcard, text, format);
  CheckFastPath(wildcard, text);
  CheckRegex(CRegex::CreateFromValue(expression), text, format);
  const std::string normal = CRegex::NormalizeEmptyAlternatives(std::string(expression));
  Require(CRegex::IsRegexForm(normal) == CRegex::IsRegexForm(expression), "the form stays");
  return 0;
}
