#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CSTDXMLString.h"
#include "Common/CUseCounted.h"
#include "Common/IBuffer.h"

// A tag with attributes, a value and nested tags, as configuration and state files hold them. No
// general XML: no name spaces, comments, declarations or CDATA.
//
//   <rule name="a" state="on">          a tag of tags: one a line, a tab a level
//   <TAB><text>one &lt; two</text>
//   <TAB><key size="3">a<b</key>        a value behind its length: taken without a look
//   <TAB><none/>
//   </rule>
//
// A tag has a value or nested tags: white space is all that may stand between these, and is then no
// part of the value. Lines end in CR LF, and where they end is read and written back. Beyond
// kDeepestIndentation levels no more tabs are added: a file that is nothing but depth would
// otherwise come out as the square of its size. Each tag is used by one thread at a time; copies
// share the nested ones. Depth costs memory, not stack.
class CSTDXMLTag {
public:
  using Pointer = CUseCountedSharedPtr<CSTDXMLTag>;

  static constexpr std::size_t kDeepestIndentation = 64;

  CSTDXMLTag() = default;
  explicit CSTDXMLTag(std::string name) : Name(std::move(name)) {}
  CSTDXMLTag(const CSTDXMLTag&) = default;
  CSTDXMLTag(CSTDXMLTag&&) = default;
  CSTDXMLTag& operator=(CSTDXMLTag other) noexcept;  // of a nested tag, too: other keeps what dies
  ~CSTDXMLTag();

  // Reads one tag from the position on, white space before it passed over, and moves the position
  // behind it. False for what is no such tag: the position and this tag are then as they were.
  //
  // The length attribute is read only behind white space, and is no attribute of the tag
  // afterwards; a length that is no number, or more than there is, is a failure.
  bool Read(std::string_view text, std::uint64_t& position);
  bool Read(Selvane::IBuffer* buffer, std::uint64_t& position);

  // Appends the tag. An attribute named "size" is left out: it would be read as the length. Names
  // go out as they are: what may stand in one is the caller's business.
  void Write(std::string& out) const;
  bool Write(Selvane::IBuffer* buffer) const;  // false when the buffer does not take it

  // Throws std::out_of_range for a name that is not there.
  const CSTDXMLString& Attribute(const std::string& name) const;

  // For diagnostics: the nested tags as a list, or as a tree down to the last.
  std::string DumpList() const;
  std::string DumpTree() const;

  std::string Name;
  std::map<std::string, CSTDXMLString> Attributes;
  CSTDXMLString Value;
  std::vector<Pointer> Tags;     // never null
  bool IsEmptyInForm = false;    // written as <a/>; a value or nested tags overrule it
  bool HasLineEndInside = true;  // between the head and the first nested tag
  bool HasLineEndBehind = true;  // behind the tag
};
