#include "module/Definition.h"

#include <cstddef>
#include <string_view>

#include "module/Exports.h"

namespace {

constexpr std::string_view kBoolean = "BOOLEAN";
constexpr std::string_view kNumber = "NUMBER";
constexpr std::string_view kString = "STRING";
constexpr std::string_view kDataRef = "DATAREF";
constexpr std::string_view kStringVector = "VECTOR<STRING>";
constexpr std::string_view kTessarin = "Tessarin";
constexpr std::string_view kTessarinList = "Tessarin.List";
constexpr std::string_view kNoArgument = "";  // a slot that is there, and empty

// The argument slots of one entry.
class Arguments {
public:
  template <class... Types>
  consteval explicit Arguments(Types... types) : fSlots{types...}, fCount(sizeof...(types)) {}

  const std::string_view* begin() const { return fSlots; }
  const std::string_view* end() const { return fSlots + fCount; }

private:
  std::string_view fSlots[3];
  std::size_t fCount;
};

struct Entry {
  std::string_view keyword;
  std::string_view result;  // empty: a type or a procedure, which has none
  std::string_view name;
  Arguments arguments;  // not looked at for a type
  std::string_view function;
};

constexpr std::string_view kType = "TYPE";
constexpr std::string_view kFunction = "CONST_FUNCTION";  // changes nothing
constexpr std::string_view kFunctionWithEffect = "FUNCTION";
constexpr std::string_view kProcedure = "PROCEDURE";
constexpr std::string_view kNothing = "";

// An entry names its export as a function: one that module/Exports.h does not declare does not
// compile.
#define qxEntry(function, keyword, result, name, ...)                                        \
  Entry {                                                                                    \
    keyword, result, name, Arguments(__VA_ARGS__), (static_cast<void>(&function), #function) \
  }

// clang-format off
constexpr Entry kEntries[] = {
    qxEntry(tovrin_module_CreateTessarin, kType, kNothing, kTessarin),
    qxEntry(tovrin_module_CreateTessarinList, kType, kNothing, kTessarinList),
    qxEntry(tovrin_module_StringListToRegExList, kFunction, kTessarinList, "ToTessarinList", kStringVector, kNoArgument),
    qxEntry(tovrin_module_MatchesInList, kFunction, kBoolean, "Tessarin.Matches", kTessarinList, kString, kNoArgument),
    qxEntry(tovrin_module_Size, kFunction, kNumber, "Size", kTessarinList, kNoArgument),
    qxEntry(tovrin_module_Get, kFunction, kTessarin, "Get", kTessarinList, kNumber, kNoArgument),
    qxEntry(tovrin_module_GetElems, kFunction, kTessarinList, "GetRange", kTessarinList, kNumber, kNumber),
    qxEntry(tovrin_module_Find, kFunction, kNumber, "Find", kTessarinList, kTessarin, kNoArgument),
    qxEntry(tovrin_module_AddToRegExList, kProcedure, kNothing, "Tessarin.Add", kTessarinList, kString, kNoArgument),
    qxEntry(tovrin_module_AddToRegExListRE, kProcedure, kNothing, "Tessarin.Add", kTessarinList, kTessarin, kNoArgument),
    qxEntry(tovrin_module_Remove, kFunction, kTessarinList, "Remove", kTessarinList, kNumber, kNoArgument),
    qxEntry(tovrin_module_RemoveElems, kFunction, kTessarinList, "Remove", kTessarinList, kNumber, kNumber),
    qxEntry(tovrin_module_Reverse, kFunction, kTessarinList, "Reverse", kTessarinList, kNoArgument),
    qxEntry(tovrin_module_AppendToRegExList, kFunction, kTessarinList, "Tessarin.Append", kTessarinList, kString, kNoArgument),
    qxEntry(tovrin_module_AppendRegExToRegExList, kFunction, kTessarinList, "Tessarin.Append", kTessarinList, kTessarin, kNoArgument),
    qxEntry(tovrin_module_Contains, kFunction, kBoolean, "Contains", kTessarinList, kTessarin, kNoArgument),
    qxEntry(tovrin_module_Join, kFunction, kTessarinList, "Join", kTessarinList, kTessarinList, kNoArgument),
    qxEntry(tovrin_module_RemoveListFromList, kFunction, kTessarinList, "Remove", kTessarinList, kTessarinList, kNoArgument),
    qxEntry(tovrin_module_Insert, kFunction, kTessarinList, "Insert", kTessarinList, kTessarin, kNumber),
    qxEntry(tovrin_module_Set, kFunction, kTessarinList, "Set", kTessarinList, kNumber, kTessarin),
    qxEntry(tovrin_module_StringToRegEx, kFunction, kTessarin, "ToTessarin", kString),
    qxEntry(tovrin_module_GlobToRegEx, kFunction, kTessarin, "Tessarin.GlobToTessarin", kString, kBoolean, kNoArgument),
    qxEntry(tovrin_module_RegExToString, kFunction, kString, "Tessarin.ToString", kTessarin),
    qxEntry(tovrin_module_RegExListToString_Deprecated, kFunction, kString, "TessarinListPtr.ToString", kTessarinList, kString, kNoArgument),
    qxEntry(tovrin_module_RegExListToString, kFunction, kString, "TessarinList.ToString", kTessarinList, kString, kNoArgument),
    qxEntry(tovrin_module_SetSorted, kFunction, kTessarinList, "SetSorted", kTessarinList, kBoolean, kNoArgument),
    qxEntry(tovrin_module_ReplaceFirstMatch, kFunction, kString, "Tessarin.ReplaceFirstMatch", kTessarin, kString, kString),
    qxEntry(tovrin_module_ReplaceFirstMatchString, kFunction, kString, "Tessarin.ReplaceFirstMatch", kString, kString, kString),
    qxEntry(tovrin_module_ReplaceAllMatches, kFunction, kString, "Tessarin.ReplaceAllMatches", kTessarin, kString, kString),
    qxEntry(tovrin_module_ReplaceAllMatchesString, kFunction, kString, "Tessarin.ReplaceAllMatches", kString, kString, kString),
    qxEntry(tovrin_module_RegExMatches, kFunction, kBoolean, "Tessarin.Matches", kTessarin, kString, kNoArgument),
    qxEntry(tovrin_module_MatchesTwoStrings, kFunction, kBoolean, "Tessarin.Matches", kString, kString, kNoArgument),
    qxEntry(tovrin_module_WildcardMatch, kFunction, kStringVector, "Tessarin.WildcardMatch", kTessarin, kString, kNoArgument),
    qxEntry(tovrin_module_SearchAllMatches, kFunction, kStringVector, "Tessarin.SearchAllMatches", kTessarin, kString, kNoArgument),
    qxEntry(tovrin_module_FindAll, kFunction, kStringVector, "Tessarin.FindAll", kTessarin, kString, kNoArgument),
    qxEntry(tovrin_module_Search, kFunction, kBoolean, "Tessarin.Search", kTessarin, kString, kNoArgument),
    qxEntry(tovrin_module_TessarinSetIHost, kFunctionWithEffect, kBoolean, "Tessarin.SetIHost", kDataRef),
};
// clang-format on

void AppendArguments(const Arguments& arguments, std::string& text) {
  text += " (";
  for (const std::string_view& argument : arguments) {
    if (&argument != arguments.begin()) text += ',';
    text += argument;
  }
  text += ')';
}

// The text starts with a blank, since each entry does: blank and keyword tell it from the one
// before.
std::string Assembled() {
  std::string text;
  for (const Entry& entry : kEntries) {
    text.append(" ").append(entry.keyword);
    if (!entry.result.empty()) text.append(" ").append(entry.result);
    text.append(" ").append(entry.name);
    if (entry.keyword != kType) AppendArguments(entry.arguments, text);
    text.append(" : ").append(entry.function);
  }
  return text;
}

// From left to right; what a replacement wrote is not looked at again.
void ReplaceAll(std::string& text, std::string_view what, std::string_view with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
}

}  // namespace

[[gnu::init_priority(200)]] std::string ModuleDefinition = Assembled();

void CleanDefinition(std::string& definition) {
  ReplaceAll(definition, ",,", ",");
  ReplaceAll(definition, ",)", ")");
  // Entries with an empty first argument; the present text has none.
  ReplaceAll(definition, "(,", "( ");
  ReplaceAll(definition, "( ,", "( ");
}
