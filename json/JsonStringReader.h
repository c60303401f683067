#pragma once

#include <string>
#include <string_view>

#include "json/JsonTextScan.h"

namespace Tovrin::JSON {

// Reads the strings of a JSON text.
class JsonStringReader {
public:
  // Reads the string at the cursor, which moves behind it, or to where reading stopped. The text
  // stands in the input where it has no escapes, otherwise in the reader until the next string.
  // False, with an error of static life, when there is no string.
  bool Read(JsonTextCursor& cursor, std::string_view& text, const char*& error) {
    if (cursor.AtEnd() || *cursor.at != '"') return Fail("string quote sign expected", error);
    const char* begin = cursor.at + 1;
    const char* stop = FindSpecial(begin, cursor.end);
    if (stop == cursor.end || *stop != '"') return ReadEscaped(cursor, stop, text, error);
    text = {begin, stop};
    cursor.at = stop + 1;
    return true;
  }

  // Whether the text that was read last stands in the reader.
  bool Holds(std::string_view text) const { return text.data() == fText.data(); }

private:
  bool ReadEscaped(JsonTextCursor& cursor, const char* firstStop, std::string_view& text,
                   const char*& error);
  const char* AppendEscape(JsonTextCursor& cursor);     // null, or the error
  const char* AppendCodePoint(JsonTextCursor& cursor);  // of a \u escape; null, or the error

  static bool Fail(const char* message, const char*& error) {
    error = message;
    return false;
  }

  std::string fText;  // of the last string with escapes
};

}  // namespace Tovrin::JSON
