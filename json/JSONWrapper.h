#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <utility>

#include "Common/CUseCounted.h"
#include "host/AutoRefPtr.h"
#include "host/IDataRef.h"
#include "host/IJSON.h"
#include "host/InterfaceImpl.h"
#include "json/JsonObject.h"

namespace Tovrin::JSON {

class JsonArray;

// What stands behind a wrapper, and what two sides of one build exchange by pointer.
//
// The lock guards the error alone: who changes a tree that others read sees to it that they do not.
struct JSONData {
  explicit JSONData(JsonValue* owned);  // null becomes a JsonNull

  void SetError(IJSON::Status status, std::string message);

  CUsePtr<JsonValue> Root;  // never null
  IJSON::Status ErrorStatus = IJSON::StatusOk;
  std::string ErrorMessage;  // of the last failure
  mutable std::shared_mutex Lock;
};

// The IJSON of this library: a node of a tree, and the error of the last operation.
//
// Nothing here throws. A failing operation answers false, null or the empty text; what was wrong
// with the request is a StatusWarning, a failure of the data a StatusError, and a message says more
// until the next operation, which begins by clearing both. Only the error getters and ForEach do
// not.
//
// Wrappers that Get, At, FindNodePath, ElementMatching and the walks hand out share their node with
// the tree that it stands in: a change through one is seen through the other. Clones share nothing.
class JSONWrapper final : public InterfaceImpl<IJSON> {
public:
  enum class Kind { Null = 0, Object = 1, Array = 2 };

  explicit JSONWrapper(Kind kind = Kind::Null);
  // A deep copy, error included. Without a source it is a null value with an error.
  explicit JSONWrapper(const JSONWrapper* other);
  explicit JSONWrapper(JsonValue* owned) : fData(std::make_shared<JSONData>(owned)) {}
  explicit JSONWrapper(CUsePtr<JsonValue> shared) : JSONWrapper(shared.Detach()) {}
  // Value and error are those of the other holders of the data. Null is no value at all, to which
  // every operation has its neutral answer.
  explicit JSONWrapper(std::shared_ptr<JSONData> data) : fData(std::move(data)) {}
  // What the text spells, or a null value with the parser's message.
  explicit JSONWrapper(const char* text);

  static AutoRefPtr<JSONWrapper> CreateNull() { return Make(Kind::Null); }
  static AutoRefPtr<JSONWrapper> CreateObject() { return Make(Kind::Object); }
  static AutoRefPtr<JSONWrapper> CreateArray() { return Make(Kind::Array); }
  // Empty for the empty text, and for one that is not JSON.
  static AutoRefPtr<JSONWrapper> FromString(const std::string& text, bool keepKeyOrder);
  static AutoRefPtr<JSONWrapper> FromString(const char* text);  // null is like the empty text

  // As Parse, with any bytes.
  bool ParseText(const std::string& text, bool keepKeyOrder);

  // The MsgPack form; the caller owns the reference. No bytes for what the format cannot hold.
  IDataRef* ToMsgPack() const;
  // Takes over what the MsgPack bytes spell. On failure the value stays.
  bool FromData(const IDataRef* data);

  const std::shared_ptr<JSONData>& SharedData() const { return fData; }

private:
  friend struct JSONWrapperTestPeer;

  bool Interface_Parse(const char* text) override;
  bool Interface_LessThan(const IJSON* other) const override;
  bool Interface_Equals(const IJSON* other) const override;
  std::size_t Interface_ToString(const char* indent, char* buffer, std::size_t size) const override;
  std::size_t Interface_ToCachedString(const char* indent, char* buffer,
                                       std::size_t size) const override;
  IJSON* Interface_FindNodePath(const char* path) const override;
  IJSON* Interface_ElementMatching(const char* key, const char* text) const override;
  IJSON* Interface_ElementMatching(const char* key, double number) const override;
  std::size_t Interface_Size() const override;
  bool Interface_Empty() const override;
  std::size_t Interface_GetString(const char* key, char* buffer, std::size_t size,
                                  bool* ok) const override;
  bool Interface_GetDouble(const char* key, double* out) const override;
  bool Interface_GetInt(const char* key, std::int32_t* out) const override;
  bool Interface_GetUInt(const char* key, std::uint32_t* out) const override;
  bool Interface_GetInt64(const char* key, std::int64_t* out) const override;
  bool Interface_GetUInt64(const char* key, std::uint64_t* out) const override;
  bool Interface_GetBoolean(const char* key, bool* out) const override;
  IJSON* Interface_Get(const char* key) const override;
  bool Interface_Has(const char* key) const override;
  IJSON* Interface_At(std::size_t index) const override;
  bool Interface_PushBack(bool value) override;
  bool Interface_PushBack(const char* value) override;
  bool Interface_PushBack(double value) override;
  bool Interface_PushBack(const IJSON* value) override;
  IJSON* Interface_Remove(std::size_t index) override;
  IJSON* Interface_Remove(const char* key) override;
  bool Interface_AsBool(bool* out) const override;
  bool Interface_AsDouble(double* out) const override;
  bool Interface_AsInt(std::int32_t* out) const override;
  bool Interface_AsUInt(std::uint32_t* out) const override;
  bool Interface_AsInt64(std::int64_t* out) const override;
  bool Interface_AsUInt64(std::uint64_t* out) const override;
  std::size_t Interface_AsString(char* buffer, std::size_t size, bool* ok) const override;
  bool Interface_IsNull() const override;
  bool Interface_IsBool() const override;
  bool Interface_IsNumber() const override;
  bool Interface_IsDouble() const override;
  bool Interface_IsInt() const override;
  bool Interface_IsUInt() const override;
  bool Interface_IsInt64() const override;
  bool Interface_IsUInt64() const override;
  bool Interface_IsString() const override;
  bool Interface_IsArray() const override;
  bool Interface_IsObject() const override;
  bool Interface_Set(const char* key, bool value) override;
  bool Interface_Set(const char* key, double value) override;
  bool Interface_Set(const char* key, std::int32_t value) override;
  bool Interface_Set(const char* key, std::uint32_t value) override;
  bool Interface_Set(const char* key, std::int64_t value) override;
  bool Interface_Set(const char* key, std::uint64_t value) override;
  bool Interface_Set(const char* key, const char* value) override;
  bool Interface_Set(const char* key, const IJSON* value) override;
  bool Interface_SetNull(const char* key) override;
  bool Interface_ReplaceAt(std::size_t index, const IJSON* value) override;
  bool Interface_ForEach(ForEachErrorFn fn, void* user, char* errors,
                         std::size_t size) const override;
  bool Interface_ForEach(ForEachFn fn, void* user) const override;
  bool Interface_ForEach(ForEachFn fn, void* user, IContext* context) const override;
  IJSON* Interface_Clone() const override;
  std::size_t Interface_SerializedSize() const override;
  std::int64_t Interface_Deserialize(const void* data, std::size_t size) override;
  std::int64_t Interface_Serialize(void* buffer, std::size_t size) const override;
  std::uint8_t Interface_GetErrorStatus() const override;
  std::size_t Interface_GetErrorMessage(char* buffer, std::size_t size, bool* ok) const override;

  ~JSONWrapper() override = default;

  static AutoRefPtr<JSONWrapper> Make(Kind kind) {
    return AutoRefPtr<JSONWrapper>(new JSONWrapper(kind));
  }

  // The beginning of an operation: clears the error. Borrowed; null when there is no value.
  JsonValue* Begin() const;
  bool Fail(Status status, std::string message) const;  // always false
  std::nullptr_t Refuse(Status status, std::string message) const;

  // The other's value when it is a wrapper of this very build, otherwise null.
  const JsonValue* RootOf(const IJSON* other) const;
  bool IsOfType(std::initializer_list<JsonValue::Type> types) const;
  template <class Number>
  bool HoldsIntegerOf() const;  // an integer that Number holds

  // The member, or null; the message says why, unless root or key is null. Quiet about a missing
  // member when told so.
  const JsonValue* Member(const char* key, bool isQuiet = false) const;
  template <class Out, class Read>
  bool GetMember(const char* key, Out* out, Read read) const;
  template <class Fits>
  IJSON* FirstWithMember(const char* key, Fits fits) const;
  const JsonValue* ArrayItemOfPath(const JsonArray& array, std::string_view piece) const;

  template <class Out>
  bool Convert(Out* out, bool (JsonValue::*convert)(Out&) const) const;

  template <class Append>
  bool PushBackWith(Append append);
  // The object to store a member in, made of a null value; or null, with its message.
  JsonObject* ObjectToSet(const char* key);
  bool Stored(bool isStored) const;  // the message of a store that was refused for its key

  CUsePtr<JsonValue> Parsed(const std::string& text, bool keepKeyOrder) const;
  std::string CompactText() const;

  std::shared_ptr<JSONData> fData;
};

}  // namespace Tovrin::JSON
