#pragma once

#include <cstdint>
#include <string_view>

#include "json/JsonNodeArena.h"

namespace Tovrin::JSON {

// Reads the number that the text begins with, and tells its size in bytes. On failure the answer is
// null and error is set, a text of static life.
JsonValue* ReadNumber(std::string_view text, JsonNodeArena& arena, std::size_t& size,
                      const char*& error);

}  // namespace Tovrin::JSON
