#pragma once

#include <string>
#include <string_view>

#include "json/JsonValue.h"

namespace Tovrin::JSON {

// The value as text in out, which is cleared first: compact, or indented when indent is not empty.
void WriteText(const JsonValue& value, std::string& out, const char* indent);
void WriteText(const JsonValue& value, std::string& out, const std::string& indent);

// Appends the text as it stands between the quotes of a JSON string.
void WriteEscaped(std::string_view text, std::string& out);

}  // namespace Tovrin::JSON
