#include "json/JsonValue.h"

#include <cstdio>

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonTreeReleaser.h"

namespace Tovrin::JSON {

bool JsonUseCounted::Release() {
  if (!DropUse()) return false;
  delete this;
  return true;
}

bool JsonValue::Release() {
  if (!DropUse()) return false;
  JsonTreeReleaser::Destroy(this);
  return true;
}

void JsonValue::ToPrettyText(std::string& out, const std::string&, const std::string&,
                             std::int32_t) const {
  ToCompactText(out);
}

JsonValue* JsonValue::FindChild(const std::string&) const {
  return nullptr;
}

JsonValue* JsonValue::FindPath(const std::string& path) {
  JsonValue* node = this;
  std::size_t begin = path.starts_with('/') ? 1 : 0;
  // A slash at the end leaves one more piece, an empty one; the empty path has none.
  for (bool isLast = begin == path.size(); !isLast;) {
    const std::size_t slash = path.find('/', begin);
    isLast = slash == std::string::npos;
    node = node->FindChild(path.substr(begin, isLast ? slash : slash - begin));
    if (!node) return nullptr;
    begin = slash + 1;
  }
  node->AddRef();
  return node;
}

JsonArray* ToArray(JsonValue* value) {
  if (!value || value->GetType() != JsonValue::TypeArray) return nullptr;
  return static_cast<JsonArray*>(value);
}

JsonObject* ToObject(JsonValue* value) {
  if (!value || value->GetType() != JsonValue::TypeObject) return nullptr;
  return static_cast<JsonObject*>(value);
}

JsonCompiledObject* ToCompiledObject(JsonValue* value) {
  if (!value || value->GetType() != JsonValue::TypeCompiledObject) return nullptr;
  return static_cast<JsonCompiledObject*>(value);
}

void ReportObjectCounters() {
  std::puts("*** Object counters not activated");
}

}  // namespace Tovrin::JSON
