// The functions of the rule language that work on one expression.

#include <stdexcept>
#include <string>
#include <string_view>

#include "Common/CRegex.h"
#include "module/Exports.h"
#include "module/TypeIds.h"
#include "module/types/ArgumentCursor.h"
#include "module/types/EngineGuard.h"
#include "module/types/ResultWriters.h"
#include "module/types/StringVectorBuilder.h"
#include "module/types/Tessarin.h"

using namespace Tovrin;

namespace {

using StringVector = AutoRefPtr<const IVectorGeneric>;

AutoRefPtr<Tessarin> MakeTessarin(std::string&& expression) {
  AutoRefPtr<Tessarin> object(new Tessarin(TessarinTypeId.load(std::memory_order_relaxed)));
  object->SetExpression(std::move(expression));
  return object;
}

// A group that took no part gives an empty text.
void AppendGroups(const CRegexCaptures& captures, StringVectorBuilder& pieces) {
  for (std::size_t group = 1; group < captures.Size(); ++group)
    pieces.Append(captures[group].Text());
}

StringVector FindAll(const Tessarin& object, std::string_view text, IContext* context) {
  StringVectorBuilder pieces(context);
  if (!object.HasRegex()) return pieces.Take();

  CRegexCaptures captures;
  while (Guarded([&] { return object.Regex()->SearchCaptures(text, captures); })) {
    if (captures.Size() > 1) {
      AppendGroups(captures, pieces);
    } else {
      pieces.Append(captures[0].Text());
    }

    // Contract: what follows a match is a text of its own, so "^" matches at its start.
    const std::string_view rest = captures.Suffix();
    // Contract: SearchAllMatches steps over an empty match, and this does not. A match that leaves
    // the whole text over would come back for ever, so it is answered as a failure of the engine.
    if (rest.size() == text.size()) {
      throw std::runtime_error(
          "Internal error in regex search: "
          "'the expression matches the empty text and makes no progress'");
    }
    text = rest;
  }
  return pieces.Take();
}

StringVector SearchAllMatches(const Tessarin& object, std::string_view text, IContext* context) {
  StringVectorBuilder pieces(context);
  if (!object.HasRegex()) return pieces.Take();

  CRegexScan matches;
  Guarded([&] { object.Regex()->ScanAll(text, matches); });
  std::string_view match;
  while (Guarded([&] { return matches.Next(match); })) pieces.Append(match);
  return pieces.Take();
}

StringVector WildcardMatch(const Tessarin& object, std::string_view text, IContext* context) {
  StringVectorBuilder pieces(context);
  if (!object.HasRegex()) return pieces.Take();

  CRegexCaptures captures;
  if (Guarded([&] { return object.Regex()->MatchCaptures(text, captures); })) {
    AppendGroups(captures, pieces);
  }
  return pieces.Take();
}

// Compiles on every call: rules that match often hold a Tessarin.
bool MatchesTwoStrings(const std::string& expression, std::string_view text) {
  const CRegexPtr regex = CRegex::Create(expression, false);
  return regex && Guarded([&] { return regex->Matches(text); });
}

// Contract: an invalid expression gives the text as it came, unlike the form that takes a Tessarin.
std::string ReplaceString(const std::string& expression, std::string&& text,
                          std::string_view replacement, bool all) {
  const CRegexPtr regex = CRegex::Create(expression, false);
  if (regex) Guarded([&] { regex->Replace(text, replacement, text, all); });
  return std::move(text);
}

// The exports below that differ in one word share the rest.

using VectorFunction = StringVector(const Tessarin& object, std::string_view text,
                                    IContext* context);

FunctionStatus CallVectorFunction(ArgumentCursor& cursor, IVariant* result,
                                  VectorFunction* function) {
  const auto object = cursor.ReadTessarin();
  const auto text = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail();

  WriteVector(result, function(*object.get(), text, cursor.Context()));
  return kSuccess;
}

FunctionStatus CallReplace(ArgumentCursor& cursor, IVariant* result, bool all) {
  const auto object = cursor.ReadTessarin();
  const auto text = cursor.ReadText();
  const auto replacement = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail(result, nullptr);

  WriteText(result, object->Replace(text, replacement, all));
  return kSuccess;
}

FunctionStatus CallReplaceString(ArgumentCursor& cursor, IVariant* result, bool all) {
  const auto expression = cursor.ReadText();
  auto text = cursor.ReadText();
  const auto replacement = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail(result, nullptr);

  WriteText(result, ReplaceString(expression, std::move(text), replacement, all));
  return kSuccess;
}

}  // namespace

qxTypeFactory(tovrin_module_CreateTessarin) {
  return new Tessarin(typeId);
}

qxModuleFunction(tovrin_module_StringToRegEx) {  // Tessarin ToTessarin (STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  auto expression = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, MakeTessarin(std::move(expression)));
  return kSuccess;
}

qxModuleFunction(tovrin_module_GlobToRegEx) {  // Tessarin Tessarin.GlobToTessarin (STRING,BOOLEAN)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto glob = cursor.ReadText();
  const auto isAnchored = cursor.ReadBoolean();
  if (cursor.Failed()) return cursor.Fail();

  std::string expression;
  CRegex::GlobToExpression(glob, isAnchored, expression);
  WriteObject(result, MakeTessarin(std::move(expression)));
  return kSuccess;
}

qxModuleFunction(tovrin_module_RegExToString) {  // STRING Tessarin.ToString (Tessarin)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto object = cursor.ReadTessarin();
  if (cursor.Failed()) return cursor.Fail(result, nullptr);

  WriteText(result, object->Expression());
  return kSuccess;
}

qxModuleFunction(tovrin_module_Search) {  // BOOLEAN Tessarin.Search (Tessarin,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto object = cursor.ReadTessarin();
  const auto text = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail(result, false);

  WriteBoolean(result, object->Search(text));
  return kSuccess;
}

qxModuleFunction(tovrin_module_RegExMatches) {  // BOOLEAN Tessarin.Matches (Tessarin,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto object = cursor.ReadTessarin();
  const auto text = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail(result, false);

  WriteBoolean(result, object->Matches(text));
  return kSuccess;
}

qxModuleFunction(tovrin_module_MatchesTwoStrings) {  // BOOLEAN Tessarin.Matches (STRING,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto expression = cursor.ReadText();
  const auto text = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail(result, false);

  WriteBoolean(result, MatchesTwoStrings(expression, text));
  return kSuccess;
}

qxModuleFunction(tovrin_module_FindAll) {  // VECTOR<STRING> Tessarin.FindAll (Tessarin,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto object = cursor.ReadTessarin();
  // Contract: ends at its first zero byte, unlike the text of every other function here.
  const auto text = cursor.ReadZeroTerminatedText();
  if (cursor.Failed()) return cursor.Fail();

  WriteVector(result, FindAll(*object.get(), text, context));
  return kSuccess;
}

// VECTOR<STRING> Tessarin.SearchAllMatches (Tessarin,STRING)
qxModuleFunction(tovrin_module_SearchAllMatches) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallVectorFunction(cursor, result, SearchAllMatches);
}

// VECTOR<STRING> Tessarin.WildcardMatch (Tessarin,STRING)
qxModuleFunction(tovrin_module_WildcardMatch) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallVectorFunction(cursor, result, WildcardMatch);
}

// STRING Tessarin.ReplaceFirstMatch (Tessarin,STRING,STRING)
qxModuleFunction(tovrin_module_ReplaceFirstMatch) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallReplace(cursor, result, false);
}

// STRING Tessarin.ReplaceFirstMatch (STRING,STRING,STRING)
qxModuleFunction(tovrin_module_ReplaceFirstMatchString) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallReplaceString(cursor, result, false);
}

// STRING Tessarin.ReplaceAllMatches (Tessarin,STRING,STRING)
qxModuleFunction(tovrin_module_ReplaceAllMatches) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallReplace(cursor, result, true);
}

// STRING Tessarin.ReplaceAllMatches (STRING,STRING,STRING)
qxModuleFunction(tovrin_module_ReplaceAllMatchesString) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallReplaceString(cursor, result, true);
}
