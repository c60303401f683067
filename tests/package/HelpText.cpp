#include "tests/package/HelpText.h"

#include <sstream>
#include <string_view>

#include "tests/tools/TovrinProgram.h"

namespace {

// The lines of a help text below one heading, up to the next; what is indented further than a name
// is its explanation.
template <class Use>
void ForEachEntry(const std::string& help, const std::string& heading, Use use) {
  std::istringstream lines(help);
  bool isBelow = false;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(' ')) isBelow = line == heading;
    if (isBelow && line.size() > 2 && line.starts_with("  ") && line[2] != ' ') {
      use(line.substr(2, line.find_first_of(" {", 2) - 2));
    }
  }
}

}  // namespace

std::set<std::string> Subcommands() {
  std::set<std::string> names;
  ForEachEntry(Tovrin({"--help"}).output,
               "Subcommands:", [&](const std::string& name) { names.insert(name); });
  return names;
}

std::set<std::string> OptionsOf(const std::string& subcommand) {
  std::set<std::string> names;
  const ChildResult help = subcommand.empty() ? Tovrin({"--help"}) : Tovrin({subcommand, "--help"});
  ForEachEntry(help.output, "Options:", [&](const std::string& entry) {
    std::istringstream spellings(entry);
    for (std::string name; std::getline(spellings, name, ',');) names.insert(name);
  });
  return names;
}
