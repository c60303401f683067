#pragma once

#include <concepts>
#include <functional>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The catalogue of messages: an ordered map from a symbolic id to an English template, in which a
// key between two dollar signs stands for what the site knows.
//
//   Resolve(GetDefaultLanguage(), ErrorId::ObjNotInitialized.Id(),
//           {{"onPosition", "CVariant: find"}, {"objName", "Variant"}})
//   gives  'CVariant: find': No initialized Variant.
//
// The map is filled by the rows' constructors before any default-priority initialiser runs, and
// never changes afterwards: any thread may render at any time, without a lock. Rendering does not
// fail; what is missing shows in the text. A placeholder without a parameter stays as it stands.

// One row. The object is the row's name, so a misspelt id does not compile.
class CErrorId {
public:
  // Enters the row into the map; a later row of the same id replaces the template.
  CErrorId(const char* id, const char* text);
  CErrorId(const CErrorId&) = delete;
  CErrorId& operator=(const CErrorId&) = delete;

  const std::string& Id() const { return fId; }

private:
  std::string fId;
};

namespace ErrorId {
#define qxErrorRow(id, text) extern const CErrorId id;
#include "Common/ErrorCatalogueRows.inc"
#undef qxErrorRow
}  // namespace ErrorId

template <class T>
concept IsText =
    std::convertible_to<const T&, std::string_view> || std::convertible_to<const T&, const char*>;
template <class T>
concept HasStreamForm = requires(std::ostream& out, const T& value) {
  out << value;
};

// A row of the list with which a site supplies the values of a message. The value is whatever the
// argument writes to a stream, in the classic locale. An argument without a stream form is reported
// to the debug log and has the empty value, which erases its placeholder; so has a null text.
struct CErrorParameter {
  CErrorParameter() = default;
  CErrorParameter(std::string_view parameterKey, std::string_view text);
  CErrorParameter(std::string_view parameterKey, const char* text);
  template <class T>
  requires(!IsText<T>) CErrorParameter(std::string_view parameterKey, const T& argument)
      : key(parameterKey) {
    if constexpr (HasStreamForm<T>) {
      std::ostringstream text;
      text.imbue(std::locale::classic());
      text << argument;
      value = std::move(text).str();
    } else {
      ReportUnknownType();
    }
  }

  std::string key;  // an empty one ends the list
  std::string value;

private:
  static void ReportUnknownType();
};
using CErrorParameters = std::vector<CErrorParameter>;

// The template of id with the parameters put in, row by row, up to an empty key or the end. An id
// that is not in the catalogue renders the row Unknown, which names it.
//
// Contract: a value is not protected from the rows behind its own. If it holds a later row's key
// between dollar signs, that is replaced too.
std::string Resolve(const std::string& language, const std::string& id,
                    const CErrorParameters& parameters);

// "[prefix] [id] [class::function] " in front of what Resolve gives. Without class or function the
// "::" goes, without both the third bracket.
std::string ResolveWithPrefix(const std::string& prefix, const std::string& language,
                              const std::string& id, const CErrorParameters& parameters,
                              const std::string& className, const std::string& function);

// Appends the two brackets "[id] [class::function] " alone, in the form that ResolveWithPrefix has.
void AppendCodeAndCaller(std::string& text, const std::string& id, const std::string& className,
                         const std::string& function);

// "en", the catalogue's one language.
const char* GetDefaultLanguage();

// Exposed so that a test can see a damaged catalogue; nothing else writes once the rows are in.
using CErrorCatalogueMap = std::map<std::string, std::string, std::less<>>;
CErrorCatalogueMap& ErrorCatalogueMap();
