#include "tests/package/Page.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <string_view>

#include "tests/support/SharedData.h"

namespace {

std::vector<std::string> LinesOf(const std::string& text) {
  static const std::regex kTime(R"(\d+(\.\d+)? (s|ms|lines/s)\b)");
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(std::regex_replace(line, kTime, "# $2"));
  }
  return lines;
}

// Whether a line is the one that the page shows, whose pieces between "..." have to stand in it in
// their order, the first in front and the last at the end.
bool IsLineShown(std::string_view shown, std::string_view line) {
  constexpr std::string_view kAnything = "...";
  bool isFirst = true;
  while (true) {
    const std::size_t end = shown.find(kAnything);
    const std::string_view piece = shown.substr(0, end);
    if (end == std::string_view::npos) return isFirst ? line == piece : line.ends_with(piece);
    const std::size_t found = line.find(piece);
    if (found == std::string_view::npos || (isFirst && found != 0)) return false;
    line.remove_prefix(found + piece.size());
    shown.remove_prefix(end + kAnything.size());
    isFirst = false;
  }
}

}  // namespace

Page ReadPage(const std::filesystem::path& path) {
  Page page;
  page.name = path.filename().string();
  bool isInBlock = false;
  bool isExcerpt = false;
  bool isBelowCommand = false;  // within the block
  std::size_t number = 0;
  for (const std::string& line : ReadLines(path)) {
    ++number;
    if (line.starts_with("```")) {
      isInBlock = !isInBlock;
      isBelowCommand = false;
      const std::size_t blank = line.find(' ');
      isExcerpt = isInBlock && blank != std::string::npos;
      if (isExcerpt) page.excerpts.push_back({number, line.substr(blank + 1), {}});
    } else if (isExcerpt) {
      page.excerpts.back().text += line + '\n';
    } else if (isInBlock && line.starts_with("$ ")) {
      page.commands.push_back({number, line.substr(2), {}});
      isBelowCommand = true;
    } else if (isBelowCommand) {
      page.commands.back().printed += line + '\n';
    }
  }
  return page;
}

std::vector<std::filesystem::path> AllPages() {
  std::vector<std::filesystem::path> pages;
  for (const auto& folder : {SourceDir(), SourceDir() / "docs"}) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      if (entry.path().extension() == ".md") pages.push_back(entry.path());
    }
  }
  std::ranges::sort(pages);
  return pages;
}

std::vector<std::string> DeadLinks(const std::filesystem::path& page) {
  const std::string text = ReadWholeFile(page);
  std::vector<std::string> dead;
  for (std::size_t at = 0; (at = text.find("](", at)) != std::string::npos;) {
    at += 2;
    const std::string target = text.substr(at, text.find(')', at) - at);
    if (target.find("://") != std::string::npos) continue;
    if (!std::filesystem::exists(page.parent_path() / target)) dead.push_back(target);
  }
  return dead;
}

bool IsShown(const std::string& shown, const std::string& printed) {
  const auto expected = LinesOf(shown);
  const auto lines = LinesOf(printed);
  // Each run of lines between two "..." is looked for behind the one before it; the first has to be
  // in front, the last at the end.
  auto at = lines.begin();
  bool isAnywhere = false;
  for (auto run = expected.begin(); run != expected.end();) {
    if (*run == "...") {
      isAnywhere = true;
      ++run;
      continue;
    }
    const auto runEnd = std::find(run, expected.end(), "...");
    const auto found =
        std::search(at, lines.end(), run, runEnd,
                    [](const auto& line, const auto& shown) { return IsLineShown(shown, line); });
    if (found == lines.end() || (!isAnywhere && found != at)) return false;
    at = found + (runEnd - run);
    isAnywhere = false;
    run = runEnd;
  }
  return isAnywhere || at == lines.end();
}
