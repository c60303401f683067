#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "json/JSONWrapper.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"

// What the tests of the wrapper share: short words for making one, and for the message it keeps.

namespace Tovrin::JSON {

using Wrapper = AutoRefPtr<JSONWrapper>;
using Json = AutoRefPtr<IJSON>;

inline constexpr auto kOk = IJSON::StatusOk;
inline constexpr auto kWarning = IJSON::StatusWarning;
inline constexpr auto kError = IJSON::StatusError;

inline Wrapper Of(const char* text) {
  Wrapper wrapper = JSONWrapper::FromString(text);
  EXPECT_TRUE(wrapper) << text;
  return wrapper;
}
inline Wrapper None() {
  return Wrapper(new JSONWrapper(std::shared_ptr<JSONData>()));
}
// An array of a null pointer, which no text spells, and 7.
inline Wrapper ArrayWithHole() {
  CUsePtr<JsonValue> seven(new JsonInteger(7));
  return Wrapper(new JSONWrapper(new JsonArray({nullptr, seven.Get()})));
}
inline const JsonCompiledSchema& Schema() {
  static const JsonCompiledSchema schema = [] {
    JsonCompiledSchema built;
    built.AddKey("first", KeyNumber);
    built.AddKey("second", KeyNumber);
    return built;
  }();
  return schema;
}
inline Wrapper Compiled() {
  auto* object = new JsonCompiledObject(&Schema());
  object->SetInteger(std::size_t{1}, 8);
  return Wrapper(new JSONWrapper(object));
}

inline void ExpectError(const IJSON& json, IJSON::Status status, const std::string& message) {
  EXPECT_EQ(json.GetErrorStatus(), status);
  EXPECT_EQ(json.GetErrorMessage(), message);
}
inline void ExpectClean(const IJSON& json) {
  ExpectError(json, kOk, "");
}

}  // namespace Tovrin::JSON
