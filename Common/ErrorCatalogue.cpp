#include "Common/ErrorCatalogue.h"

#include <cstddef>

#include "Common/DebugLog.h"

qxSource("Common\\ErrorCatalogue");

namespace {

constexpr std::string_view kOpening = "[";
constexpr std::string_view kClosing = "] ";

// One pass over the text, so that a value full of placeholders costs no more than its length.
std::string ReplaceAll(const std::string& text, std::string_view mark, std::string_view value) {
  std::size_t found = text.find(mark);
  if (found == std::string::npos) return text;

  std::string result;
  std::size_t copied = 0;
  for (; found != std::string::npos; found = text.find(mark, copied)) {
    result.append(text, copied, found - copied).append(value);
    copied = found + mark.size();
  }
  return result.append(text, copied);
}

std::string Substitute(std::string text, const CErrorParameters& parameters) {
  for (const CErrorParameter& parameter : parameters) {
    if (parameter.key.empty()) break;
    text = ReplaceAll(text, "$" + parameter.key + "$", parameter.value);
  }
  return text;
}

void AppendBracket(std::string& text, std::string_view content) {
  text.append(kOpening).append(content).append(kClosing);
}

}  // namespace

// Before every initialiser of the default priority, since those may report; in the order of the
// list.
namespace ErrorId {
#define qxErrorRow(id, text) [[gnu::init_priority(300)]] const CErrorId id(#id, text);
#include "Common/ErrorCatalogueRows.inc"
#undef qxErrorRow
}  // namespace ErrorId

CErrorId::CErrorId(const char* id, const char* text) : fId(id) {
  ErrorCatalogueMap().insert_or_assign(fId, text);
}

// Built by the first row and therefore destroyed behind all of them.
CErrorCatalogueMap& ErrorCatalogueMap() {
  static CErrorCatalogueMap map;
  return map;
}

CErrorParameter::CErrorParameter(std::string_view parameterKey, std::string_view text)
    : key(parameterKey), value(text) {}

CErrorParameter::CErrorParameter(std::string_view parameterKey, const char* text)
    : CErrorParameter(parameterKey, std::string_view(text == nullptr ? "" : text)) {}

void CErrorParameter::ReportUnknownType() {
  qxDebugPrint(1, "CErrorParameter::CErrorParameter",
               "Unknown type of parameter. Will be set to empty type.");
}

const char* GetDefaultLanguage() {
  return "en";
}

// Calls itself at most twice: once for the language, once for the row that stands in.
std::string Resolve(const std::string& language, const std::string& id,
                    const CErrorParameters& parameters) {
  const CErrorCatalogueMap& map = ErrorCatalogueMap();
  if (map.empty()) return "!! ERRORCODE MAP IS EMPTY !!";

  if (const auto row = map.find(id); row != map.end()) return Substitute(row->second, parameters);
  if (language != GetDefaultLanguage()) return Resolve(GetDefaultLanguage(), id, parameters);
  if (id == ErrorId::Unknown.Id()) return "!! ERRORCODE MAP IS INVALID !!";
  return Resolve(GetDefaultLanguage(), ErrorId::Unknown.Id(), {{"code", id}});
}

std::string ResolveWithPrefix(const std::string& prefix, const std::string& language,
                              const std::string& id, const CErrorParameters& parameters,
                              const std::string& className, const std::string& function) {
  std::string text;
  AppendBracket(text, prefix);
  AppendCodeAndCaller(text, id, className, function);
  return text += Resolve(language, id, parameters);
}

void AppendCodeAndCaller(std::string& text, const std::string& id, const std::string& className,
                         const std::string& function) {
  std::string brackets;  // apart: the text may be one of the names
  AppendBracket(brackets, id);
  const bool both = !className.empty() && !function.empty();
  const std::string caller = className + (both ? "::" : "") + function;
  if (!caller.empty()) AppendBracket(brackets, caller);
  text += brackets;
}
