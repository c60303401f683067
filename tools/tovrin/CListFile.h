#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CRegexVectorHolder.h"

namespace RefHost {

// One element of a list file.
struct ListElement {
  std::string text;  // a wildcard, or "regex(...)"
  std::size_t line;  // where it stands, from 1
};

// A list as an administrator keeps it: an element a line, blank lines and lines that begin with "#"
// passed over.
class CListFile {
public:
  // With isAnchored every line is an expression for whole texts, as ToTessarinList takes its texts.
  // Throws std::runtime_error that names the file when it cannot be read.
  CListFile(const std::string& path, bool isAnchored);

  const std::vector<ListElement>& Elements() const { return fElements; }
  const std::string& Path() const { return fPath; }

  // What matches the list; built anew at each call.
  std::unique_ptr<const CRegexVectorHolder> Build() const;

private:
  std::string fPath;
  std::vector<ListElement> fElements;
};

// Why an element does not compile, in the engine's words; empty for one that does.
std::string FaultOf(const std::string& element);

// "PATH:LINE: ELEMENT: reason" for each element that does not compile. A list whose elements
// compile and whose merged form does not gets one line that says so.
std::string DescribeFaults(const CListFile& list);

}  // namespace RefHost
