#pragma once

#include <cstdint>
#include <string_view>

#include "json/JsonNodeArena.h"

namespace Tovrin::JSON {

// Reads the number that the text begins with, and tells its size in bytes. On failure the answer is
// null and error is set, a text of static life.
JsonValue* ReadNumber(std::string_view text, JsonNodeArena& arena, std::size_t& size,
                      const char*& error);

// The end of the number at a place, if it is one that prints as it is written: a real that stays
// text, or an integer of so few digits that the serialiser is sure of their count. Null for others,
// and where there is none.
const char* FindPlainNumberEnd(const char* at, const char* end);

}  // namespace Tovrin::JSON
