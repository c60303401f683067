#pragma once

#include <string>

#include "Common/CUseCounted.h"
#include "json/JsonWriter.h"

namespace Tovrin::JSON {

// A tree that a test owns.
using Node = CUsePtr<JsonValue>;

inline std::string Compact(const JsonValue& value) {
  std::string text;
  WriteText(value, text, nullptr);
  return text;
}

}  // namespace Tovrin::JSON
