#include "json/JSONWrapper.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include "host/Data.h"
#include "json/JSONText.h"
#include "json/JsonArray.h"
#include "json/JsonMsgPack.h"
#include "json/JsonParser.h"
#include "json/JsonWriter.h"

namespace Tovrin::JSON {
namespace {

using Length = std::uint64_t;  // ahead of a serialised text, in the order of this machine

JsonValue* NewValue(JSONWrapper::Kind kind) {
  switch (kind) {
    case JSONWrapper::Kind::Object:
      return new JsonObject;
    case JSONWrapper::Kind::Array:
      return new JsonArray;
    default:
      return new JsonNull;
  }
}

// What an object is: the class that its table of operations belongs to. A dynamic_cast would not
// do, since it goes by the class's name, and another build may have one of that name and of another
// layout.
const void* TableOf(const IJSON* object) {
  const void* table;
  std::memcpy(&table, static_cast<const void*>(object), sizeof table);
  return table;
}

// All bytes of the reference; false when it gives fewer than it says it has. Read in pieces, so
// that one that claims more than there is costs no memory.
bool ReadAll(const IDataRef& data, std::string& bytes) {
  constexpr std::size_t kPiece = 64 * 1024;
  const std::size_t size = data.GetSize();
  if (const void* at = data.GetData()) {
    bytes.assign(static_cast<const char*>(at), size);
    return true;
  }
  while (bytes.size() < size) {
    const std::size_t begin = bytes.size();
    const std::size_t count = std::min(kPiece, size - begin);
    bytes.resize(begin + count);
    if (data.Read(bytes.data() + begin, count, begin) != count) return false;
  }
  return true;
}

}  // namespace

JSONData::JSONData(JsonValue* owned) : Root(owned ? owned : new JsonNull) {}

void JSONData::SetError(IJSON::Status status, std::string message) {
  const std::unique_lock lock(Lock);
  ErrorStatus = status;
  ErrorMessage = std::move(message);
}

JSONWrapper::JSONWrapper(Kind kind) : JSONWrapper(NewValue(kind)) {}

JSONWrapper::JSONWrapper(const JSONWrapper* other)
    : JSONWrapper(other && other->fData ? other->fData->Root->Clone() : nullptr) {
  if (!other) {
    fData->SetError(StatusError, "Can't copy NULL object");
  } else if (other->fData) {
    const std::shared_lock lock(other->fData->Lock);
    fData->SetError(other->fData->ErrorStatus, other->fData->ErrorMessage);
  }
}

JSONWrapper::JSONWrapper(const char* text) : JSONWrapper() {
  Interface_Parse(text);
}

AutoRefPtr<JSONWrapper> JSONWrapper::FromString(const std::string& text, bool keepKeyOrder) {
  if (text.empty()) return {};
  AutoRefPtr<JSONWrapper> wrapper = CreateNull();
  return wrapper->ParseText(text, keepKeyOrder) ? wrapper : AutoRefPtr<JSONWrapper>();
}

AutoRefPtr<JSONWrapper> JSONWrapper::FromString(const char* text) {
  return FromString(std::string(text ? text : ""), true);
}

JsonValue* JSONWrapper::Begin() const {
  if (!fData) return nullptr;
  fData->SetError(StatusOk, {});
  return fData->Root.Get();
}

bool JSONWrapper::Fail(Status status, std::string message) const {
  if (fData) fData->SetError(status, std::move(message));
  return false;
}

std::nullptr_t JSONWrapper::Refuse(Status status, std::string message) const {
  Fail(status, std::move(message));
  return nullptr;
}

const JsonValue* JSONWrapper::RootOf(const IJSON* other) const {
  if (!other || TableOf(other) != TableOf(this)) return nullptr;
  const auto& data = static_cast<const JSONWrapper*>(other)->fData;
  return data ? data->Root.Get() : nullptr;
}

bool JSONWrapper::Interface_Parse(const char* text) {
  if (text) return ParseText(text, true);
  Begin();
  return true;
}

bool JSONWrapper::ParseText(const std::string& text, bool keepKeyOrder) {
  if (!Begin()) return false;
  JsonParseContext context;
  context.KeepKeyOrder = keepKeyOrder;
  CUsePtr<JsonValue> root(JSON::Parse(text, &context));
  if (!root) {
    return Fail(StatusError, "JSON parse error in line " + std::to_string(context.Line) + ": " +
                                 context.ErrorMessage);
  }
  fData->Root = std::move(root);
  return true;
}

bool JSONWrapper::Interface_LessThan(const IJSON* other) const {
  const JsonValue* mine = Begin();
  const JsonValue* theirs = RootOf(other);
  if (!mine || !theirs) return false;

  std::string myText, theirText;
  mine->AsString(myText);
  theirs->AsString(theirText);
  return myText < theirText;  // bytes without sign, a prefix before the longer
}

bool JSONWrapper::Interface_Equals(const IJSON* other) const {
  const JsonValue* mine = Begin();
  const JsonValue* theirs = RootOf(other);
  return mine && theirs && *mine == *theirs;
}

std::size_t JSONWrapper::Interface_ToString(const char* indent, char* buffer,
                                            std::size_t size) const {
  std::string text;
  if (const JsonValue* root = Begin()) WriteText(*root, text, indent);
  return GiveText(text, buffer, size);
}

std::size_t JSONWrapper::Interface_ToCachedString(const char* indent, char* buffer,
                                                  std::size_t size) const {
  return Interface_ToString(indent, buffer, size);
}

std::size_t JSONWrapper::Interface_Size() const {
  JsonValue* root = Begin();
  if (const JsonArray* array = ToArray(root)) return array->Size();
  if (const JsonObject* object = ToObject(root)) return object->Size();
  if (const JsonCompiledObject* object = ToCompiledObject(root)) return object->Count();
  return 0;
}

bool JSONWrapper::Interface_Empty() const {
  const JsonValue* root = Begin();
  if (!root || root->GetType() == JsonValue::TypeNull) return true;
  if (root->GetType() == JsonValue::TypeString) {
    return static_cast<const JsonString*>(root)->Text().empty();
  }
  return root->IsContainer() && Interface_Size() == 0;
}

template <class Out>
bool JSONWrapper::Convert(Out* out, bool (JsonValue::*convert)(Out&) const) const {
  const JsonValue* root = Begin();
  if (!out) return false;
  *out = Out{};
  return root && (root->*convert)(*out);
}

bool JSONWrapper::Interface_AsBool(bool* out) const {
  return Convert(out, &JsonValue::AsBool);
}
bool JSONWrapper::Interface_AsDouble(double* out) const {
  return Convert(out, &JsonValue::AsDouble);
}
bool JSONWrapper::Interface_AsInt(std::int32_t* out) const {
  return Convert(out, &JsonValue::AsInt);
}
bool JSONWrapper::Interface_AsUInt(std::uint32_t* out) const {
  return Convert(out, &JsonValue::AsUInt);
}
bool JSONWrapper::Interface_AsInt64(std::int64_t* out) const {
  return Convert(out, &JsonValue::AsInt64);
}
bool JSONWrapper::Interface_AsUInt64(std::uint64_t* out) const {
  return Convert(out, &JsonValue::AsUInt64);
}

std::size_t JSONWrapper::Interface_AsString(char* buffer, std::size_t size, bool* ok) const {
  const JsonValue* root = Begin();
  if (!root) return GiveNoText(buffer, size, ok);
  if (ok) *ok = true;
  std::string text;
  root->AsString(text);
  return GiveText(text, buffer, size);
}

bool JSONWrapper::IsOfType(std::initializer_list<JsonValue::Type> types) const {
  const JsonValue* root = Begin();
  if (!root) return false;
  for (const JsonValue::Type type : types) {
    if (root->GetType() == type) return true;
  }
  return false;
}

template <class Number>
bool JSONWrapper::HoldsIntegerOf() const {
  const JsonValue* root = Begin();
  std::int64_t value = 0;
  return root && root->GetType() == JsonValue::TypeInteger && root->AsInt64(value) &&
         std::in_range<Number>(value);
}

bool JSONWrapper::Interface_IsNull() const {
  return IsOfType({JsonValue::TypeNull});
}
bool JSONWrapper::Interface_IsBool() const {
  return IsOfType({JsonValue::TypeTrue, JsonValue::TypeFalse});
}
bool JSONWrapper::Interface_IsNumber() const {
  return IsOfType({JsonValue::TypeInteger, JsonValue::TypeReal});
}
bool JSONWrapper::Interface_IsDouble() const {
  return IsOfType({JsonValue::TypeReal});
}
bool JSONWrapper::Interface_IsInt() const {
  return HoldsIntegerOf<std::int32_t>();
}
bool JSONWrapper::Interface_IsUInt() const {
  return HoldsIntegerOf<std::uint32_t>();
}
// Contract: true above 2^63-1 too, where AsInt64 fails.
bool JSONWrapper::Interface_IsInt64() const {
  return IsOfType({JsonValue::TypeInteger});
}
// Contract: false above 2^63-1.
bool JSONWrapper::Interface_IsUInt64() const {
  return HoldsIntegerOf<std::uint64_t>();
}
bool JSONWrapper::Interface_IsString() const {
  return IsOfType({JsonValue::TypeString});
}
bool JSONWrapper::Interface_IsArray() const {
  return IsOfType({JsonValue::TypeArray});
}
// Contract: a compiled object is none.
bool JSONWrapper::Interface_IsObject() const {
  return IsOfType({JsonValue::TypeObject});
}

IJSON* JSONWrapper::Interface_Clone() const {
  const JsonValue* root = Begin();
  return root ? new JSONWrapper(root->Clone()) : nullptr;
}

std::string JSONWrapper::CompactText() const {
  std::string text;
  if (const JsonValue* root = Begin()) WriteText(*root, text, nullptr);
  return text;
}

std::size_t JSONWrapper::Interface_SerializedSize() const {
  return CompactText().size() + sizeof(Length);
}

std::int64_t JSONWrapper::Interface_Serialize(void* buffer, std::size_t size) const {
  const std::string text = CompactText();
  const Length length = text.size();
  const std::size_t whole = sizeof length + text.size();
  if (!buffer || size < whole) return -1;

  std::memcpy(buffer, &length, sizeof length);
  std::memcpy(static_cast<char*>(buffer) + sizeof length, text.data(), text.size());
  return static_cast<std::int64_t>(whole);
}

std::int64_t JSONWrapper::Interface_Deserialize(const void* data, std::size_t size) {
  Begin();
  Length length = 0;
  if (!data || size < sizeof length) return -1;
  std::memcpy(&length, data, sizeof length);
  if (length > size - sizeof length) return -1;

  const std::string text(static_cast<const char*>(data) + sizeof length, length);
  return ParseText(text, true) ? static_cast<std::int64_t>(sizeof length + length) : -1;
}

IDataRef* JSONWrapper::ToMsgPack() const {
  std::string bytes;
  if (const JsonValue* root = Begin()) JSON::ToMsgPack(*root, bytes);
  return new Data(std::move(bytes));
}

bool JSONWrapper::FromData(const IDataRef* data) {
  if (!Begin()) return false;
  JsonParseContext context;
  context.KeepKeyOrder = true;
  std::string bytes;
  CUsePtr<JsonValue> root;
  if (data && ReadAll(*data, bytes)) root = CUsePtr<JsonValue>(ParseMsgPack(bytes, &context));
  if (!root) return Fail(StatusError, "reading from MsgPack failed");
  fData->Root = std::move(root);
  return true;
}

std::uint8_t JSONWrapper::Interface_GetErrorStatus() const {
  if (!fData) return StatusError;
  const std::shared_lock lock(fData->Lock);
  return fData->ErrorStatus;
}

std::size_t JSONWrapper::Interface_GetErrorMessage(char* buffer, std::size_t size, bool* ok) const {
  if (!fData) return GiveNoText(buffer, size, ok);
  if (ok) *ok = true;
  const std::shared_lock lock(fData->Lock);
  return GiveText(fData->ErrorMessage, buffer, size);
}

}  // namespace Tovrin::JSON
