#include "Common/CRegex.h"

#include <array>
#include <cctype>
#include <regex>
#include <utility>

#include "Common/CRegexShared.h"
#include "Common/CUnicodeString.h"
#include "Common/CompiledRegex.h"
#include "Common/DebugLog.h"
#include "Common/Utf8.h"

qxSource("Common\\CRegex");

namespace {

// The standard library's tolower for every byte, as it stood at the first match.
const std::array<char, 256>& LowerCase() {
  static const std::array<char, 256> table = [] {
    std::array<char, 256> lower{};
    for (std::size_t byte = 0; byte < lower.size(); ++byte) {
      lower[byte] = static_cast<char>(std::tolower(static_cast<int>(byte)));
    }
    return lower;
  }();
  return table;
}

std::string ToLower(std::string_view text) {
  const auto& lower = LowerCase();
  std::string result(text);
  for (char& byte : result) byte = lower[static_cast<unsigned char>(byte)];
  return result;
}

// Texts of one size; the second is lower-cased already.
bool EqualsLower(std::string_view text, std::string_view literal) {
  const auto& lower = LowerCase();
  for (std::size_t i = 0; i < literal.size(); ++i) {
    if (lower[static_cast<unsigned char>(text[i])] != literal[i]) return false;
  }
  return true;
}

// The literal without the backslashes of its escapes; false when it is no literal.
bool UnescapeLiteral(std::string_view glob, std::string& literal) {
  for (std::size_t i = 0; i < glob.size(); ++i) {
    char character = glob[i];
    if (character == '*' || character == '?' || character == '[') return false;
    if (character == '\\') {
      if (++i == glob.size()) return false;
      character = glob[i];
      if (std::string_view("*?[\\").find(character) == std::string_view::npos) return false;
    }
    literal += character;
  }
  return true;
}

// Contract: a backslash at the very end of a format stands for nothing. The library would write it.
std::string_view WithoutOpenEscape(std::string_view format) {
  const std::size_t lastOther = format.find_last_not_of('\\');
  const std::size_t backslashes =
      format.size() - (lastOther == std::string_view::npos ? 0 : lastOther + 1);
  if (backslashes % 2 != 0) format.remove_suffix(1);
  return format;
}

constexpr const char* kSearchFailed = "Internal error in regex search";
constexpr const char* kReplaceFailed = "Internal error in regex replace";

}  // namespace

CRegexPtr CRegex::Create(std::string_view text, bool isWildcard,
                         std::shared_ptr<Matching::MemoryAllowance> allowance) {
  try {
    return CRegexPtr(new CRegex(WithoutCaseMarks(text), isWildcard, std::move(allowance)));
  } catch (const std::regex_error& error) {
    qxDebugPrint(3, "CRegex::Create",
                 "String is not a valid regex: '" << text << "' - error: " << error.what());
    return {};
  }
}

CRegexPtr CRegex::CreateFromValue(std::string_view value) {
  return IsRegexForm(value) ? CreateFromRegexForm(value, false) : Create(value, true);
}

CRegexPtr CRegex::CreateFromRegexForm(std::string_view value, bool isWildcard) {
  return Create(StripRegexForm(value), isWildcard);
}

CRegex::CRegex(std::string_view text, bool isWildcard,
               std::shared_ptr<Matching::MemoryAllowance> allowance)
    : fSource(text), fIsWildcard(isWildcard) {
  if (isWildcard) {
    GlobToExpression(text, true, fPattern);
  } else {
    fPattern = text;
  }
  fRegex = std::make_unique<const CompiledRegex>(fPattern, std::move(allowance));
  // An empty wildcard runs through the engine.
  if (isWildcard && !text.empty()) FindFastPath();
}

CRegex::~CRegex() = default;

void CRegex::FindFastPath() {
  const std::size_t first = fSource.find_first_not_of('*');
  if (first == std::string::npos) {
    fFastMode = CRegexFastMode::FastAny;
    return;
  }

  const std::size_t last = fSource.find_last_not_of('*');
  std::string literal;
  if (!UnescapeLiteral(std::string_view(fSource).substr(first, last - first + 1), literal)) return;

  fLiteral = ToLower(literal);
  // Bytes that are no UTF-8 would be passed over in a comparison of characters, and a literal of
  // nothing else would match every text; as RAW they are compared as the bytes that they are.
  fLiteralText = MakeUseCounted<CUnicodeString>(
      fLiteral, IsWellFormedUtf8(fLiteral) ? Charset::Utf8 : Charset::Raw);
  const bool endsHere = last == fSource.size() - 1;
  if (first == 0) {
    fFastMode = endsHere ? CRegexFastMode::FastExact : CRegexFastMode::FastPrefix;
  } else {
    fFastMode = endsHere ? CRegexFastMode::FastSuffix : CRegexFastMode::FastContains;
  }
}

bool CRegex::Matches(std::string_view text) const {
  return Guarded(kMatchingFailed, [&] {
    return fFastMode == CRegexFastMode::FastNone ? fRegex->Match(text) : MatchesFast(text);
  });
}

// Perf: compares in place, where a lower-cased copy of the text would say the same; only the search
// for a literal makes one. See CRegexBench.
bool CRegex::MatchesFast(std::string_view text) const {
  if (fFastMode == CRegexFastMode::FastAny) return true;
  const std::size_t size = fLiteral.size();
  if (text.size() < size) return false;

  switch (fFastMode) {
    case CRegexFastMode::FastExact:
      return text.size() == size && EqualsLower(text, fLiteral);
    case CRegexFastMode::FastPrefix:
      return EqualsLower(text.substr(0, size), fLiteral);
    case CRegexFastMode::FastSuffix:
      return EqualsLower(text.substr(text.size() - size), fLiteral);
    default:
      return ToLower(text).find(fLiteral) != std::string::npos;
  }
}

bool CRegex::MatchCaptures(std::string_view text, CRegexCaptures& captures) const {
  return Guarded(kOtherMatchingFailed, [&] { return fRegex->Match(text, captures); });
}

bool CRegex::Search(std::string_view text) const {
  return Guarded(kSearchFailed, [&] { return fRegex->Search(text); });
}

bool CRegex::SearchCaptures(std::string_view text, CRegexCaptures& captures) const {
  return Guarded(kSearchFailed, [&] { return fRegex->Search(text, captures); });
}

void CRegex::Replace(std::string_view text, std::string_view format, std::string& out,
                     bool all) const {
  Guarded(kReplaceFailed, [&] {
    std::string result = fRegex->Replace(text, WithoutOpenEscape(format), all);
    out = std::move(result);
  });
}

class CRegexScan::State : public CompiledRegex::Walk {
  using CompiledRegex::Walk::Walk;
};

CRegexScan::CRegexScan() = default;
CRegexScan::~CRegexScan() = default;

bool CRegexScan::Next(std::string_view& match) {
  return fState && fState->Next(match);
}

void CRegex::ScanAll(std::string_view text, CRegexScan& state) const {
  state.fState.reset();  // an engine that fails leaves no walk over another text behind
  state.fState = std::make_unique<CRegexScan::State>(*fRegex, text);
}

std::uint64_t CRegex::GetCaptureCount() const {
  return fRegex->MarkCount();
}

void CRegex::SetAffixInfo(bool hasAffix, std::uint64_t affixGroups) {
  fHasAffix = hasAffix;
  fAffixGroups = affixGroups;
}
