#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

// A page of the documentation as its reader follows it: blocks between ``` lines with commands
// behind
// "$ " and what each prints below. These rules let a page show everything that it needs:
//
//   $ cat NAME        where there is no such file yet, the lines below are written to it
//   $ make TARGET     is not run by a test: make is only asked what it would do
//   ...               stands for any number of lines, and within a line for any text
//   12.3 s, 45 lines/s   times and rates are not compared
//
// A block that opens with ```LANGUAGE FILE shows a part of that file of the project, word for word.
struct PageCommand {
  std::size_t line = 0;  // of the page, from 1
  std::string words;
  std::string printed;
};

struct PageExcerpt {
  std::size_t line = 0;
  std::string file;  // from the project's root
  std::string text;
};

struct Page {
  std::string name;
  std::vector<PageCommand> commands;
  std::vector<PageExcerpt> excerpts;
};

Page ReadPage(const std::filesystem::path& path);

// All pages that the project has.
std::vector<std::filesystem::path> AllPages();

// The targets of a page's links that are not there, those on the network apart.
std::vector<std::string> DeadLinks(const std::filesystem::path& page);

// Whether what a command printed is what the page shows.
bool IsShown(const std::string& shown, const std::string& printed);
