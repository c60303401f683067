#pragma once

#include <cstdint>
#include <string>

#include "Common/CUseCounted.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonWriter.h"

namespace Tovrin::JSON {

// A tree that a test owns.
using Node = CUsePtr<JsonValue>;

inline std::string Compact(const JsonValue& value) {
  std::string text;
  WriteText(value, text, nullptr);
  return text;
}

inline std::string CompactOrNone(const JsonValue* value) {
  return value ? Compact(*value) : "(none)";
}

// Brings nodes into states that their operations never leave behind.
struct JsonTestPeer {
  static void SetCount(JsonCompiledObject& object, std::uint64_t count) { object.fCount = count; }
  static void DropSchema(JsonCompiledObject& object) { object.fSchema = nullptr; }
  // The value of the first entry is released.
  static void ForgetFirstValue(JsonObject& object) {
    object.fEntries[0].fValue->Release();
    object.fEntries[0].fValue = nullptr;
  }
};

}  // namespace Tovrin::JSON
