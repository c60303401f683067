#include "tests/module/DefinitionEntries.h"

#include <algorithm>
#include <regex>
#include <stdexcept>

#include "tests/support/SharedData.h"

namespace {

// Walks the text from left to right; what it expects and does not find is an error at that byte.
class Reader {
public:
  explicit Reader(std::string_view text) : fText(text) {}

  bool AtEnd() const { return fAt == fText.size(); }

  void Expect(std::string_view what) {
    if (fText.substr(fAt, what.size()) != what) Refuse("expected '" + std::string(what) + "'");
    fAt += what.size();
  }

  // One or more bytes up to the first of these, which stays unread; the end of the text ends it
  // too.
  std::string UpTo(std::string_view ends) {
    const std::size_t end = std::min(fText.find_first_of(ends, fAt), fText.size());
    if (end == fAt) Refuse("expected a word");
    const std::string_view word = fText.substr(fAt, end - fAt);
    fAt = end;
    return std::string(word);
  }

  bool Take(char c) {
    if (AtEnd() || fText[fAt] != c) return false;
    ++fAt;
    return true;
  }

  [[noreturn]] void Refuse(const std::string& why) const {
    throw std::runtime_error(why + " at byte " + std::to_string(fAt));
  }

private:
  std::string_view fText;
  std::size_t fAt = 0;
};

// A type name may hold a comma between angle brackets: MAP<STRING,NUMBER>.
std::string ReadType(Reader& reader) {
  std::string type = reader.UpTo(",)<");
  if (reader.Take('<')) {
    type += '<' + reader.UpTo(">") + '>';
    reader.Expect(">");
  }
  return type;
}

std::vector<std::string> ReadArguments(Reader& reader) {
  std::vector<std::string> arguments;
  reader.Expect(" (");
  do {
    arguments.push_back(ReadType(reader));
  } while (reader.Take(','));
  reader.Expect(")");
  return arguments;
}

DefinitionEntry ReadEntry(Reader& reader) {
  DefinitionEntry entry;
  reader.Expect(" ");
  entry.keyword = reader.UpTo(" ");
  reader.Expect(" ");
  if (entry.keyword == "CONST_FUNCTION" || entry.keyword == "FUNCTION") {
    entry.result = reader.UpTo(" ");
    reader.Expect(" ");
  } else if (entry.keyword != "TYPE" && entry.keyword != "PROCEDURE") {
    reader.Refuse("unknown keyword '" + entry.keyword + "' before this place");
  }
  entry.name = reader.UpTo(" ");
  if (entry.keyword != "TYPE") entry.arguments = ReadArguments(reader);
  reader.Expect(" : ");
  entry.function = reader.UpTo(" ");
  return entry;
}

}  // namespace

std::vector<DefinitionEntry> ReadDefinition(std::string_view text) {
  std::vector<DefinitionEntry> entries;
  for (Reader reader(text); !reader.AtEnd();) entries.push_back(ReadEntry(reader));
  return entries;
}

std::set<std::string> NamesOfTheVersionScript() {
  static const std::regex kName(R"(^\s*([A-Za-z_]\w*);$)");
  std::set<std::string> names;
  for (const std::string& line : ReadLines(SourceDir() / "cmake/exports.map")) {
    std::smatch match;
    if (std::regex_match(line, match, kName)) names.insert(match[1]);
  }
  return names;
}
