#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "Common/CText.h"

// One value of an XML tag or attribute: bytes, and what is known about them. Copied by member; one
// thread at a time.
class CSTDXMLString {
public:
  CSTDXMLString() = default;
  explicit CSTDXMLString(std::string bytes) : fBytes(std::move(bytes)), fIsSet(true) {}
  explicit CSTDXMLString(const CText& text) : fText(text), fIsSet(true), fIsText(true) {}
  CSTDXMLString(const CSTDXMLString&) = default;
  CSTDXMLString& operator=(const CSTDXMLString&) = default;
  CSTDXMLString(CSTDXMLString&&) = default;
  CSTDXMLString& operator=(CSTDXMLString&&) = default;
  virtual ~CSTDXMLString() = default;

  // The value in UTF-8, as far as it was given as a text, else its bytes.
  std::string_view Bytes() const { return fIsText ? fText.Utf8() : std::string_view(fBytes); }
  bool IsSet() const { return fIsSet; }
  // Written behind a length, as it is. Reading sets this where a length stood.
  bool IsSized() const { return fIsSized; }
  void SetSized(bool isSized) { fIsSized = isSized; }

  // Sets, for output, the special characters as references. Target must not be the source.
  //
  // Contract: byte 8, backspace, becomes "?" and does not come back; other control bytes go through
  // as they are, and so does all beyond 7 bit.
  static void Encode(std::string_view bytes, std::string& target);
  // The same, but an "&" that begins a numeric character reference stays. Tags are written so.
  //
  // Contract: the reference need not end in ";", and is never decoded: "&#xa;" as text comes back
  // as a line feed, "&#65;" as it is.
  static void EncodeKeepingReferences(std::string_view bytes, std::string& target);
  // What either form wrote, read back in one pass; any other "&" stays.
  static std::string Decode(std::string_view text);

private:
  CText fText;           // the value, when it was given as a text
  std::string fBytes;    // else
  bool fIsSet = false;   // a value was given, if only an empty one
  bool fIsText = false;  // which of the two fields it is
  bool fIsSized = false;
};
