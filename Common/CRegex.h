#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/CRegexCaptures.h"
#include "Common/CUseCounted.h"

class CRegex;
class CRegexScan;
class CUnicodeString;
class CompiledRegex;
namespace Matching {
class MemoryAllowance;
}

using CRegexPtr = CUsePtr<CRegex>;

// How Matches answers a simple wildcard without the engine.
enum class CRegexFastMode : std::uint8_t {
  FastNone = 0,      // the engine answers
  FastExact = 1,     // literal: the text equals it
  FastPrefix = 2,    // literal and stars: the text starts with it
  FastSuffix = 3,    // stars and literal: the text ends with it
  FastContains = 4,  // literal between stars: the text contains it
  FastAny = 5,       // nothing but stars: every text
};

// The one compiled expression of the system: everything that matches text goes through it.
//
// An expression arrives as text of one of two forms. "regex(" expression ")" is an ECMAScript
// expression, any other text a wildcard of "*", "?" and brackets. Both are matched byte by byte and
// without regard to case, as the standard library's std::regex does; simple wildcards are answered
// without the engine.
//
// Immutable once built, SetAffixInfo excepted, which only the builder of a list calls before it
// shares the object. Any number of threads may match on one object at once; no lock is taken.
//
// A bad expression is no error: Create answers null, and the reason goes to the debug log. An
// engine that gives up while matching becomes a CRegexException; the object is as good as before.
class CRegex : public CUseCounted {
public:
  // ---- construction

  // What is built while matching takes its memory of the allowance, where one is given.
  static CRegexPtr Create(std::string_view text, bool isWildcard,
                          std::shared_ptr<Matching::MemoryAllowance> allowance = nullptr);
  // Takes either text form.
  static CRegexPtr CreateFromValue(std::string_view value);
  // Contract: "REGEX(a)" is an expression here, and a wildcard as bytes. Null is the empty text.
  static CRegexPtr CreateFromValue(const CUnicodeString* value);
  // Takes text that is known to be "regex(...)", and what stands in it for what isWildcard says.
  static CRegexPtr CreateFromRegexForm(std::string_view value, bool isWildcard);
  // Contract: compiles the pattern, so the copy of a wildcard has no fast path, and answers by the
  // engine alone, for which "*" does not go over a line end.
  CRegexPtr Clone() const { return Create(fPattern, false); }
  ~CRegex() override;

  // ---- matching. Throws CRegexException when the engine gives up.

  // The whole text. The only question that the fast path answers.
  bool Matches(std::string_view text) const;
  // Null is the empty text. The fast path folds case as Unicode does, and so more than that on
  // bytes; the engine gets the text in UTF-8.
  //
  // Contract: a zero byte ends what the engine sees.
  bool Matches(const CUnicodeString* text) const;
  bool MatchCaptures(std::string_view text, CRegexCaptures& captures) const;
  // The leftmost match anywhere in the text.
  bool Search(std::string_view text) const;
  bool SearchCaptures(std::string_view text, CRegexCaptures& captures) const;

  // The text with its matches, or the first of them, replaced. In the format "&" is the whole
  // match, a backslash and a digit that group, or nothing where there is none, and a backslash and
  // another character that character; a backslash at the end is dropped. Text and format may be
  // views into out.
  void Replace(std::string_view text, std::string_view format, std::string& out, bool all) const;

  // Puts the state in front of the first match; the caller takes them one by one. The text and this
  // object outlive the state.
  //
  // Contract: an engine that gives up here, or while the state is walked, leaves as the
  // std::regex_error that it is.
  void ScanAll(std::string_view text, CRegexScan& state) const;

  // ---- what it is

  std::uint64_t GetCaptureCount() const;  // groups, the whole match not counted
  const std::string& Pattern() const { return fPattern; }
  const std::string& Source() const { return fSource; }
  bool IsWildcard() const { return fIsWildcard; }
  CRegexFastMode FastMode() const { return fFastMode; }
  const std::string& Literal() const { return fLiteral; }

  // A scanner of a list says that its alternatives stand within a prefix or suffix, and how many
  // groups that prefix holds.
  void SetAffixInfo(bool hasAffix, std::uint64_t affixGroups);
  bool HasAffix() const { return fHasAffix; }
  std::uint64_t AffixGroups() const { return fAffixGroups; }

  // ---- text forms

  static bool IsRegexForm(std::string_view text);
  // Contract: without regard to case, unlike the question about bytes.
  static bool IsRegexForm(const CUnicodeString& text);
  static bool IsWildcardForm(std::string_view text) { return !IsRegexForm(text); }
  // What stands between the brackets of "regex(...)"; the text is known to be of that form.
  static std::string_view StripRegexForm(std::string_view text);
  static bool IsRegexMetaChar(char character);
  // Whether the value compiles; the reason why not goes to the debug log. Null is the empty text.
  //
  // Contract: asks the question about bytes, so "REGEX((" is a wildcard here, and valid.
  static bool IsValid(const CUnicodeString* value);

  // The expression that a wildcard stands for, read from index start. Knows no file system: a star
  // takes every character but a line end.
  static void GlobToExpression(std::string_view glob, bool anchored, std::string& out,
                               std::size_t start = 0);
  // The expression for just this text, read from index start.
  static void EscapeForRegex(std::string_view source, bool anchors, std::size_t start,
                             std::string& out);
  // A value of the form "regex(...)" with its empty alternatives written another way; any other
  // value as it is.
  static std::string NormalizeEmptyAlternatives(const std::string& value);

private:
  // Lets the engine's std::regex_error out.
  CRegex(std::string_view text, bool isWildcard,
         std::shared_ptr<Matching::MemoryAllowance> allowance);

  void FindFastPath();
  bool MatchesFast(std::string_view text) const;
  bool MatchesFast(const CUnicodeString& text) const;

  // Constant from the constructor on.
  std::string fPattern;                         // what the engine compiled
  std::unique_ptr<const CompiledRegex> fRegex;  // never null; views fPattern
  std::string fSource;                          // the text that the constructor received
  bool fIsWildcard;
  // Written by SetAffixInfo, before the object is shared.
  bool fHasAffix = false;
  std::uint64_t fAffixGroups = 0;  // groups within the prefix; read only when fHasAffix is set
  // Constant from the constructor on.
  CRegexFastMode fFastMode = CRegexFastMode::FastNone;
  std::string fLiteral;                  // of the fast path, lower-cased byte by byte
  CUsePtr<CUnicodeString> fLiteralText;  // fLiteral again; null where the fast path has none
};

// A walk over all matches of a text that do not overlap, as CRegex::ScanAll begins it. After an
// empty match a match that is not empty is looked for at the same place, and then one byte further.
//
// One thread at a time. An object that no ScanAll has filled has no matches.
class CRegexScan {
public:
  CRegexScan();
  ~CRegexScan();

  // The next match, or false. Lets the engine's std::regex_error out.
  bool Next(std::string_view& match);

private:
  friend class CRegex;
  class State;

  std::unique_ptr<State> fState;
};
