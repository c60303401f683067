#include <charconv>
#include <utility>

#include "json/JSONText.h"
#include "json/JSONWrapper.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonParser.h"
#include "json/JsonTextScan.h"

// What a wrapper reads from its items and members, and what it changes.

namespace Tovrin::JSON {
namespace {

constexpr char kNoArray[] = "JSON object is not an array";
constexpr char kCannotSet[] = "Can't set key/value pair into JSON";

// A wrapper that shares the node; null for none.
IJSON* ShareNode(JsonValue* node) {
  return node ? new JSONWrapper(ShareUse(node)) : nullptr;
}

bool HasMembers(const JsonValue& value) {
  return value.GetType() == JsonValue::TypeObject ||
         value.GetType() == JsonValue::TypeCompiledObject;
}

// The member of an object of either kind; null for none.
JsonValue* MemberOf(JsonValue* value, const char* key) {
  if (const JsonObject* object = ToObject(value)) return object->ChildAt(key);
  if (const JsonCompiledObject* object = ToCompiledObject(value)) {
    return object->ChildAt(std::string_view(key));
  }
  return nullptr;
}

std::string TextOf(const JsonValue& value) {
  std::string text;
  value.AsString(text);
  return text;
}

// The whole number that a text begins with, behind blanks and a sign; false when there is none, or
// when 64 bits do not hold it.
bool LeadingInteger(std::string_view text, std::int64_t& number) {
  const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r");
  if (begin == text.npos) return false;
  text.remove_prefix(begin);
  if (text.size() > 1 && text[0] == '+' && IsDigit(text[1])) text.remove_prefix(1);
  return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
}

// An integer of the member that Out holds. The faults are those of a member that is no integer, and
// of one that is out of range.
template <class Out>
auto IntegerOr(const char* noInteger, const char* outOfRange) {
  return [=](const JsonValue& member, Out& out) -> const char* {
    std::int64_t value = 0;
    if (!member.AsInt64(value)) return noInteger;
    if (!std::in_range<Out>(value)) return outOfRange;
    out = static_cast<Out>(value);
    return nullptr;
  };
}

}  // namespace

IJSON* JSONWrapper::Interface_FindNodePath(const char* path) const {
  JsonValue* node = Begin();
  if (!node || !path) return nullptr;
  std::string_view rest = path;
  if (rest.starts_with('/')) rest.remove_prefix(1);

  for (bool isMore = !rest.empty(); isMore;) {
    const std::size_t end = rest.find('/');
    const std::string_view piece = rest.substr(0, end);
    isMore = end != rest.npos;
    if (isMore) rest.remove_prefix(end + 1);

    if (const JsonArray* array = ToArray(node)) {
      if (!piece.empty()) node = const_cast<JsonValue*>(ArrayItemOfPath(*array, piece));
    } else if (const JsonObject* object = ToObject(node)) {
      node = object->ChildAt(piece);
      if (!node) return Refuse(StatusError, "Error while fetching subnode");
    } else {
      return Refuse(StatusWarning, "Couldn't find JSON node, JSON subnode not found");
    }
    if (!node) return nullptr;
  }
  return ShareNode(node);
}

const JsonValue* JSONWrapper::ArrayItemOfPath(const JsonArray& array,
                                              std::string_view piece) const {
  if (!IsDigit(piece[0])) {
    return Refuse(StatusWarning, "Couldn't find JSON node, array index is not a number");
  }
  std::int32_t index = 0;
  const auto [end, failure] = std::from_chars(piece.data(), piece.data() + piece.size(), index);
  if (failure != std::errc() || static_cast<std::size_t>(index) >= array.Size()) {
    return Refuse(StatusWarning, "Couldn't find JSON node, array index out of bounds");
  }
  const JsonValue* item = array.ChildAt(static_cast<std::size_t>(index));
  return item ? item : Refuse(StatusError, "Error while fetching array subnode");
}

template <class Fits>
IJSON* JSONWrapper::FirstWithMember(const char* key, Fits fits) const {
  const JsonArray* array = ToArray(Begin());
  if (!array || !key) return Refuse(StatusWarning, kNoArray);
  for (JsonValue* item : array->Items()) {
    const JsonValue* member = MemberOf(item, key);
    if (member && fits(*member)) return ShareNode(item);
  }
  return nullptr;
}

IJSON* JSONWrapper::Interface_ElementMatching(const char* key, const char* text) const {
  return FirstWithMember(key,
                         [&](const JsonValue& member) { return text && TextOf(member) == text; });
}

IJSON* JSONWrapper::Interface_ElementMatching(const char* key, double number) const {
  return FirstWithMember(key, [&](const JsonValue& member) {
    double real = 0;
    if (member.AsDouble(real)) return real == number;
    std::int64_t integer = 0;
    return LeadingInteger(TextOf(member), integer) && static_cast<double>(integer) == number;
  });
}

const JsonValue* JSONWrapper::Member(const char* key, bool isQuiet) const {
  JsonValue* root = Begin();
  if (!root || !key) return nullptr;
  if (!HasMembers(*root)) {
    return Refuse(StatusError, std::string("Error while searching member '") + key + "'. Type is " +
                                   std::string(kJsonTypeNames[root->GetType()]) +
                                   " but should be Object.");
  }
  const JsonValue* member = MemberOf(root, key);
  if (!member && !isQuiet) Fail(StatusWarning, std::string("Could not find member '") + key + "'");
  return member;
}

// read answers what is wrong with the member, or null, and writes only what it answers for.
template <class Out, class Read>
bool JSONWrapper::GetMember(const char* key, Out* out, Read read) const {
  if (!out) {
    Begin();
    return false;
  }
  *out = Out{};
  const JsonValue* member = Member(key);
  if (!member) return false;

  const char* fault = read(*member, *out);
  if (!fault) return true;
  *out = Out{};
  return Fail(StatusWarning, std::string("Member '") + key + "' is no " + fault);
}

std::size_t JSONWrapper::Interface_GetString(const char* key, char* buffer, std::size_t size,
                                             bool* ok) const {
  const JsonValue* member = Member(key);
  if (!member) return GiveNoText(buffer, size, ok);
  if (ok) *ok = true;
  return GiveText(TextOf(*member), buffer, size);
}

bool JSONWrapper::Interface_GetDouble(const char* key, double* out) const {
  return GetMember(key, out, [](const JsonValue& member, double& value) {
    return member.AsDouble(value) ? nullptr : "double";
  });
}

bool JSONWrapper::Interface_GetBoolean(const char* key, bool* out) const {
  return GetMember(key, out, [](const JsonValue& member, bool& value) {
    return member.AsBool(value) ? nullptr : "boolean";
  });
}

bool JSONWrapper::Interface_GetInt(const char* key, std::int32_t* out) const {
  // Contract: the two faults stand for each other.
  return GetMember(key, out, IntegerOr<std::int32_t>("32 bit integer", "integer"));
}

bool JSONWrapper::Interface_GetUInt(const char* key, std::uint32_t* out) const {
  constexpr const char* kFault = "32 bit unsigned integer";
  return GetMember(key, out, IntegerOr<std::uint32_t>(kFault, kFault));
}

bool JSONWrapper::Interface_GetInt64(const char* key, std::int64_t* out) const {
  return GetMember(key, out, IntegerOr<std::int64_t>("integer", "integer"));
}

bool JSONWrapper::Interface_GetUInt64(const char* key, std::uint64_t* out) const {
  constexpr const char* kFault = "unsigned integer";
  return GetMember(key, out, IntegerOr<std::uint64_t>(kFault, kFault));
}

IJSON* JSONWrapper::Interface_Get(const char* key) const {
  return ShareNode(const_cast<JsonValue*>(Member(key, true)));
}

bool JSONWrapper::Interface_Has(const char* key) const {
  JsonValue* root = Begin();
  if (!root || !key) return false;
  const JsonArray* array = ToArray(root);
  if (!array) return MemberOf(root, key) != nullptr;
  for (const JsonValue* item : array->Items()) {
    if (item && TextOf(*item) == key) return true;
  }
  return false;
}

IJSON* JSONWrapper::Interface_At(std::size_t index) const {
  const JsonArray* array = ToArray(Begin());
  if (!array) return nullptr;
  if (index >= array->Size()) return Refuse(StatusError, "Index is out of bounds");
  JsonValue* item = array->ChildAt(index);
  return item ? ShareNode(item)
              : Refuse(StatusError, "Error while accessing element at given index");
}

template <class Append>
bool JSONWrapper::PushBackWith(Append append) {
  JsonValue* root = Begin();
  if (!root) return false;
  JsonArray* array = ToArray(root);
  if (!array) {
    return Fail(StatusWarning, std::string("Couldn't push back to JSON array, ").append(kNoArray));
  }
  append(*array);
  return true;
}

bool JSONWrapper::Interface_PushBack(bool value) {
  return PushBackWith([&](JsonArray& array) { array.AppendBool(value); });
}

bool JSONWrapper::Interface_PushBack(double value) {
  return PushBackWith([&](JsonArray& array) { array.AppendDouble(value); });
}

bool JSONWrapper::Interface_PushBack(const char* value) {
  // Contract: a text that is not UTF-8 is dropped, and that is no failure.
  const bool isArray = PushBackWith([&](JsonArray& array) {
    if (value) array.AppendString(value);
  });
  if (!isArray || value) return isArray;
  return Fail(StatusWarning, "Couldn't push back invalid value to JSON array");
}

// Contract: another implementation's value is refused without a message.
bool JSONWrapper::Interface_PushBack(const IJSON* value) {
  JsonArray* array = ToArray(Begin());
  const JsonValue* source = RootOf(value);
  if (!fData || (value && !source)) return false;
  if (!value || !array) return Fail(StatusWarning, kNoArray);
  array->AppendCopy(source);
  return true;
}

bool JSONWrapper::Interface_ReplaceAt(std::size_t index, const IJSON* value) {
  JsonArray* array = ToArray(Begin());
  const JsonValue* source = RootOf(value);
  if (!fData || (value && !source)) return false;
  if (!value || !array) return Fail(StatusWarning, kNoArray);
  if (index >= array->Size()) return false;
  array->Replace(index, source->Clone());
  return true;
}

IJSON* JSONWrapper::Interface_Remove(std::size_t index) {
  JsonValue* root = Begin();
  if (!root) return nullptr;
  const std::string message = "Couldn't remove element at position " + std::to_string(index);
  JsonArray* array = ToArray(root);
  if (!array) return Refuse(StatusWarning, message + ", " + kNoArray);
  if (index >= array->Size()) return Refuse(StatusWarning, message);

  CUsePtr<JsonValue> removed(array->Child(index));
  array->Remove(index);
  return new JSONWrapper(removed.Detach());
}

IJSON* JSONWrapper::Interface_Remove(const char* key) {
  JsonValue* root = Begin();
  if (!root || !key) return nullptr;
  const std::string message = std::string("Couldn't remove element with key ") + key;
  JsonObject* object = ToObject(root);
  if (!object) return Refuse(StatusWarning, message + ", JSON object is not an object");

  CUsePtr<JsonValue> removed(object->Child(std::string_view(key)));
  if (!removed) return Refuse(StatusWarning, message);
  object->Remove(key);
  return new JSONWrapper(removed.Detach());
}

JsonObject* JSONWrapper::ObjectToSet(const char* key) {
  JsonValue* root = Begin();
  if (!root || !key) return Refuse(StatusError, kCannotSet);
  // Contract: where the null stands in another tree, that tree keeps it.
  if (root->GetType() == JsonValue::TypeNull) fData->Root = CUsePtr<JsonValue>(new JsonObject);
  JsonObject* object = ToObject(fData->Root.Get());
  if (object) return object;
  return Refuse(StatusError, std::string(kCannotSet) + ", JSON element is not a JSON object");
}

bool JSONWrapper::Stored(bool isStored) const {
  return isStored ||
         Fail(StatusError, std::string(kCannotSet) + ", JSON key is not a valid UTF8-string");
}

bool JSONWrapper::Interface_Set(const char* key, bool value) {
  JsonObject* object = ObjectToSet(key);
  return object && Stored(object->SetBool(key, value));
}

bool JSONWrapper::Interface_Set(const char* key, double value) {
  JsonObject* object = ObjectToSet(key);
  return object && Stored(object->SetDouble(key, value));
}

bool JSONWrapper::Interface_Set(const char* key, std::int32_t value) {
  return Interface_Set(key, std::int64_t{value});
}

bool JSONWrapper::Interface_Set(const char* key, std::uint32_t value) {
  return Interface_Set(key, std::int64_t{value});
}

bool JSONWrapper::Interface_Set(const char* key, std::int64_t value) {
  JsonObject* object = ObjectToSet(key);
  return object && Stored(object->SetInteger(key, value));
}

bool JSONWrapper::Interface_Set(const char* key, std::uint64_t value) {
  JsonObject* object = ObjectToSet(key);
  return object && Stored(object->SetUnsigned(key, value));
}

bool JSONWrapper::Interface_SetNull(const char* key) {
  JsonObject* object = ObjectToSet(key);
  return object && Stored(object->SetNull(key));
}

bool JSONWrapper::Interface_Set(const char* key, const char* value) {
  JsonObject* object = ObjectToSet(value ? key : nullptr);
  if (!object) return false;
  if (object->SetString(key, value)) return true;
  std::string message = kCannotSet;
  if (IsValidUtf8(key)) {
    message += std::string(", value for key \"") + key + "\" is not a valid UTF8-string";
  } else {
    message += ", key and/or value is not a valid UTF8-string";
  }
  return Fail(StatusError, std::move(message));
}

bool JSONWrapper::Interface_Set(const char* key, const IJSON* value) {
  const JsonValue* source = RootOf(value);
  if (value && !source) {  // Contract: without a message, as above
    Begin();
    return false;
  }
  const CUsePtr<JsonValue> copy(value ? source->Clone() : nullptr);  // first: may be this very tree
  JsonObject* object = ObjectToSet(value ? key : nullptr);
  return object && Stored(object->SetShared(key, copy.Get()));
}

}  // namespace Tovrin::JSON
