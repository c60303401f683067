#include "tools/tovrin/Definition.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <utility>

namespace RefHost {
namespace {

constexpr std::array<std::pair<std::string_view, EntryKind>, 4> kKeywords = {{
    {"TYPE", EntryKind::Type},
    {"CONST_FUNCTION", EntryKind::ConstFunction},
    {"FUNCTION", EntryKind::Function},
    {"PROCEDURE", EntryKind::Procedure},
}};

bool IsNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.';
}

class CDefinitionParser {
public:
  explicit CDefinitionParser(std::string_view text) : fText(text) {}

  std::vector<DefinitionEntry> All() {
    std::vector<DefinitionEntry> entries;
    do {
      if (!SkipBlanks()) Refuse("a blank");
      entries.push_back(Entry());
    } while (!AtEnd());
    return entries;
  }

private:
  bool AtEnd() const { return fAt == fText.size(); }
  char Peek() const { return AtEnd() ? '\0' : fText[fAt]; }

  bool SkipBlanks() {
    const std::size_t before = fAt;
    while (Peek() == ' ') ++fAt;
    return fAt != before;
  }

  [[noreturn]] void Refuse(std::string_view wanted) const {
    throw CDefinitionError(fmt::format("definition text, column {}: {} expected{}", fAt + 1, wanted,
                                       AtEnd() ? ", but the text ends" : ""));
  }

  void Sign(char sign) {
    if (Peek() != sign) Refuse(fmt::format("'{}'", sign));
    ++fAt;
  }

  std::string Name(std::string_view wanted) {
    const std::size_t begin = fAt;
    while (!AtEnd() && IsNameByte(Peek())) ++fAt;
    if (fAt == begin) Refuse(wanted);
    return std::string(fText.substr(begin, fAt - begin));
  }

  std::string Type() {
    std::string type = Name("a type");
    if ((type != "VECTOR" && type != "MAP") || Peek() != '<') return type;
    const bool isMap = type == "MAP";
    Sign('<');
    type += '<' + Name("a type");
    if (isMap) {
      Sign(',');
      type += ',' + Name("a type");
    }
    Sign('>');
    return type + '>';
  }

  std::vector<std::string> Arguments() {
    std::vector<std::string> arguments;
    Sign('(');
    SkipBlanks();
    if (Peek() != ')') {
      arguments.push_back(Type());
      while (Peek() == ',') {
        Sign(',');
        arguments.push_back(Type());
      }
      SkipBlanks();
    }
    Sign(')');
    return arguments;
  }

  DefinitionEntry Entry() {
    DefinitionEntry entry;
    entry.kind = Keyword();
    if (entry.kind == EntryKind::ConstFunction || entry.kind == EntryKind::Function) {
      entry.result = Type();
      SkipBlanks();
    }
    entry.name = Name("a name");
    SkipBlanks();
    if (entry.kind != EntryKind::Type) {
      entry.arguments = Arguments();
      SkipBlanks();
    }
    Sign(':');
    SkipBlanks();
    entry.exportName = Name("an export");
    return entry;
  }

  EntryKind Keyword() {
    const std::size_t begin = fAt;
    const std::string word = Name("a keyword");
    for (const auto& [keyword, kind] : kKeywords) {
      if (word != keyword) continue;
      if (!SkipBlanks()) Refuse("a blank");
      return kind;
    }
    fAt = begin;
    Refuse("TYPE, CONST_FUNCTION, FUNCTION or PROCEDURE");
  }

  std::string_view fText;
  std::size_t fAt = 0;
};

}  // namespace

std::string DefinitionEntry::Signature() const {
  std::string signature = result.empty() ? name : result + ' ' + name;
  if (kind != EntryKind::Type) signature += fmt::format(" ({})", fmt::join(arguments, ","));
  return signature;
}

std::vector<DefinitionEntry> ParseDefinition(std::string_view text) {
  return CDefinitionParser(text).All();
}

std::string_view KeywordOf(EntryKind kind) {
  for (const auto& [keyword, value] : kKeywords) {
    if (value == kind) return keyword;
  }
  return {};
}

}  // namespace RefHost
