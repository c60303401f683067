#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IObject.h"

namespace Tovrin {

// A JSON value of the host's or of the module's, behind a C-shaped border.
//
// Texts come out through a buffer of the caller: the first try has 1024 bytes, and a longer text is
// asked for again with room for the size that the first try told.
class TOVRIN_API IJSON : public IObject {
public:
  enum Status : std::uint8_t { StatusOk = 0, StatusWarning = 1, StatusError = 2 };
  using ForEachFn = bool (*)(const char* key, const IJSON* value, void* user);
  using ForEachErrorFn = bool (*)(const char* key, const IJSON* value, void* user, char* error,
                                  std::size_t size);

  bool Parse(const char* text) { return Interface_Parse(text); }
  bool LessThan(const IJSON* other) const { return Interface_LessThan(other); }
  bool Equals(const IJSON* other) const { return Interface_Equals(other); }
  std::string ToString(const char* indent = "") const {
    return Collect([&](char* b, std::size_t n) { return Interface_ToString(indent, b, n); });
  }
  std::string ToCachedString(const char* indent = "") const {
    return Collect([&](char* b, std::size_t n) { return Interface_ToCachedString(indent, b, n); });
  }
  AutoRefPtr<IJSON> FindNodePath(const char* path) const {
    return Take(Interface_FindNodePath(path));
  }
  AutoRefPtr<IJSON> ElementMatching(const char* key, const char* text) const {
    return Take(Interface_ElementMatching(key, text));
  }
  AutoRefPtr<IJSON> ElementMatching(const char* key, double number) const {
    return Take(Interface_ElementMatching(key, number));
  }
  std::size_t Size() const { return Interface_Size(); }
  bool Empty() const { return Interface_Empty(); }
  bool GetString(const char* key, std::string& out) const {
    bool ok = false;
    out = Collect([&](char* b, std::size_t n) { return Interface_GetString(key, b, n, &ok); });
    return ok;
  }
  bool GetDouble(const char* key, double* out) const { return Interface_GetDouble(key, out); }
  bool GetInt(const char* key, std::int32_t* out) const { return Interface_GetInt(key, out); }
  bool GetUInt(const char* key, std::uint32_t* out) const { return Interface_GetUInt(key, out); }
  bool GetInt64(const char* key, std::int64_t* out) const { return Interface_GetInt64(key, out); }
  bool GetUInt64(const char* key, std::uint64_t* out) const {
    return Interface_GetUInt64(key, out);
  }
  bool GetBoolean(const char* key, bool* out) const { return Interface_GetBoolean(key, out); }
  AutoRefPtr<IJSON> Get(const char* key) const { return Take(Interface_Get(key)); }
  bool Has(const char* key) const { return Interface_Has(key); }
  AutoRefPtr<IJSON> At(std::size_t index) const { return Take(Interface_At(index)); }
  bool PushBack(bool value) { return Interface_PushBack(value); }
  bool PushBack(const char* value) { return Interface_PushBack(value); }
  bool PushBack(double value) { return Interface_PushBack(value); }
  bool PushBack(const IJSON* value) { return Interface_PushBack(value); }
  AutoRefPtr<IJSON> Remove(std::size_t index) { return Take(Interface_Remove(index)); }
  AutoRefPtr<IJSON> Remove(const char* key) { return Take(Interface_Remove(key)); }
  bool AsBool(bool* out) const { return Interface_AsBool(out); }
  bool AsDouble(double* out) const { return Interface_AsDouble(out); }
  bool AsInt(std::int32_t* out) const { return Interface_AsInt(out); }
  bool AsUInt(std::uint32_t* out) const { return Interface_AsUInt(out); }
  bool AsInt64(std::int64_t* out) const { return Interface_AsInt64(out); }
  bool AsUInt64(std::uint64_t* out) const { return Interface_AsUInt64(out); }
  bool AsString(std::string& out) const {
    bool ok = false;
    out = Collect([&](char* b, std::size_t n) { return Interface_AsString(b, n, &ok); });
    return ok;
  }
  bool IsNull() const { return Interface_IsNull(); }
  bool IsBool() const { return Interface_IsBool(); }
  bool IsNumber() const { return Interface_IsNumber(); }
  bool IsDouble() const { return Interface_IsDouble(); }
  bool IsInt() const { return Interface_IsInt(); }
  bool IsUInt() const { return Interface_IsUInt(); }
  bool IsInt64() const { return Interface_IsInt64(); }
  bool IsUInt64() const { return Interface_IsUInt64(); }
  bool IsString() const { return Interface_IsString(); }
  bool IsArray() const { return Interface_IsArray(); }
  bool IsObject() const { return Interface_IsObject(); }
  bool Set(const char* key, bool value) { return Interface_Set(key, value); }
  bool Set(const char* key, double value) { return Interface_Set(key, value); }
  bool Set(const char* key, std::int32_t value) { return Interface_Set(key, value); }
  bool Set(const char* key, std::uint32_t value) { return Interface_Set(key, value); }
  bool Set(const char* key, std::int64_t value) { return Interface_Set(key, value); }
  bool Set(const char* key, std::uint64_t value) { return Interface_Set(key, value); }
  bool Set(const char* key, const char* value) { return Interface_Set(key, value); }
  bool Set(const char* key, const std::string& value) { return Interface_Set(key, value.c_str()); }
  bool Set(const char* key, const IJSON* value) { return Interface_Set(key, value); }
  bool SetNull(const char* key) { return Interface_SetNull(key); }
  bool ReplaceAt(std::size_t index, const IJSON* value) {
    return Interface_ReplaceAt(index, value);
  }
  bool ForEach(ForEachErrorFn fn, void* user, char* errors, std::size_t size) const {
    return Interface_ForEach(fn, user, errors, size);
  }
  bool ForEach(ForEachFn fn, void* user) const { return Interface_ForEach(fn, user); }
  bool ForEach(ForEachFn fn, void* user, IContext* context) const {
    return Interface_ForEach(fn, user, context);
  }
  AutoRefPtr<IJSON> Clone() const { return Take(Interface_Clone()); }
  std::size_t SerializedSize() const { return Interface_SerializedSize(); }
  std::int64_t Deserialize(const void* data, std::size_t size) {
    return Interface_Deserialize(data, size);
  }
  std::int64_t Serialize(void* buffer, std::size_t size) const {
    return Interface_Serialize(buffer, size);
  }
  Status GetErrorStatus() const { return static_cast<Status>(Interface_GetErrorStatus()); }
  std::string GetErrorMessage() const {
    bool ok = false;
    return Collect([&](char* b, std::size_t n) { return Interface_GetErrorMessage(b, n, &ok); });
  }

private:
  static AutoRefPtr<IJSON> Take(IJSON* raw) { return AutoRefPtr<IJSON>(raw); }
  template <class Fill>
  static std::string Collect(Fill fill) {  // 1024 bytes first; text up to its first NUL
    char small[1024] = {};
    const std::size_t need = fill(small, sizeof small);
    if (need < sizeof small) return std::string(small);
    std::string large(need, '\0');  // whose own end serves where need does not count the NUL
    fill(large.data(), need);
    return std::string(large.data());
  }

  // Contract: the host calls these by position
  virtual bool Interface_Parse(const char* text) = 0;
  virtual bool Interface_LessThan(const IJSON* other) const = 0;
  virtual bool Interface_Equals(const IJSON* other) const = 0;
  virtual std::size_t Interface_ToString(const char* indent, char* buffer,
                                         std::size_t size) const = 0;
  virtual std::size_t Interface_ToCachedString(const char* indent, char* buffer,
                                               std::size_t size) const = 0;
  virtual IJSON* Interface_FindNodePath(const char* path) const = 0;
  virtual IJSON* Interface_ElementMatching(const char* key, const char* text) const = 0;
  virtual IJSON* Interface_ElementMatching(const char* key, double number) const = 0;
  virtual std::size_t Interface_Size() const = 0;
  virtual bool Interface_Empty() const = 0;
  virtual std::size_t Interface_GetString(const char* key, char* buffer, std::size_t size,
                                          bool* ok) const = 0;
  virtual bool Interface_GetDouble(const char* key, double* out) const = 0;
  virtual bool Interface_GetInt(const char* key, std::int32_t* out) const = 0;
  virtual bool Interface_GetUInt(const char* key, std::uint32_t* out) const = 0;
  virtual bool Interface_GetInt64(const char* key, std::int64_t* out) const = 0;
  virtual bool Interface_GetUInt64(const char* key, std::uint64_t* out) const = 0;
  virtual bool Interface_GetBoolean(const char* key, bool* out) const = 0;
  virtual IJSON* Interface_Get(const char* key) const = 0;
  virtual bool Interface_Has(const char* key) const = 0;
  virtual IJSON* Interface_At(std::size_t index) const = 0;
  virtual bool Interface_PushBack(bool value) = 0;
  virtual bool Interface_PushBack(const char* value) = 0;
  virtual bool Interface_PushBack(double value) = 0;
  virtual bool Interface_PushBack(const IJSON* value) = 0;
  virtual IJSON* Interface_Remove(std::size_t index) = 0;
  virtual IJSON* Interface_Remove(const char* key) = 0;
  virtual bool Interface_AsBool(bool* out) const = 0;
  virtual bool Interface_AsDouble(double* out) const = 0;
  virtual bool Interface_AsInt(std::int32_t* out) const = 0;
  virtual bool Interface_AsUInt(std::uint32_t* out) const = 0;
  virtual bool Interface_AsInt64(std::int64_t* out) const = 0;
  virtual bool Interface_AsUInt64(std::uint64_t* out) const = 0;
  virtual std::size_t Interface_AsString(char* buffer, std::size_t size, bool* ok) const = 0;
  virtual bool Interface_IsNull() const = 0;
  virtual bool Interface_IsBool() const = 0;
  virtual bool Interface_IsNumber() const = 0;
  virtual bool Interface_IsDouble() const = 0;
  virtual bool Interface_IsInt() const = 0;
  virtual bool Interface_IsUInt() const = 0;
  virtual bool Interface_IsInt64() const = 0;
  virtual bool Interface_IsUInt64() const = 0;
  virtual bool Interface_IsString() const = 0;
  virtual bool Interface_IsArray() const = 0;
  virtual bool Interface_IsObject() const = 0;
  virtual bool Interface_Set(const char* key, bool value) = 0;
  virtual bool Interface_Set(const char* key, double value) = 0;
  virtual bool Interface_Set(const char* key, std::int32_t value) = 0;
  virtual bool Interface_Set(const char* key, std::uint32_t value) = 0;
  virtual bool Interface_Set(const char* key, std::int64_t value) = 0;
  virtual bool Interface_Set(const char* key, std::uint64_t value) = 0;
  virtual bool Interface_Set(const char* key, const char* value) = 0;
  virtual bool Interface_Set(const char* key, const IJSON* value) = 0;
  virtual bool Interface_SetNull(const char* key) = 0;
  virtual bool Interface_ReplaceAt(std::size_t index, const IJSON* value) = 0;
  virtual bool Interface_ForEach(ForEachErrorFn fn, void* user, char* errors,
                                 std::size_t size) const = 0;
  virtual bool Interface_ForEach(ForEachFn fn, void* user) const = 0;
  virtual bool Interface_ForEach(ForEachFn fn, void* user, IContext* context) const = 0;
  virtual IJSON* Interface_Clone() const = 0;
  virtual std::size_t Interface_SerializedSize() const = 0;
  virtual std::int64_t Interface_Deserialize(const void* data, std::size_t size) = 0;
  virtual std::int64_t Interface_Serialize(void* buffer, std::size_t size) const = 0;
  virtual std::uint8_t Interface_GetErrorStatus() const = 0;
  virtual std::size_t Interface_GetErrorMessage(char* buffer, std::size_t size, bool* ok) const = 0;

protected:
  virtual ~IJSON() = default;  // ends the table; InterfaceImpl overrides this very slot
};

// The compact text of a JSON value; empty when there is none.
inline std::string CompactTextOf(const AutoRefPtr<IJSON>& json) {
  return json ? json->ToString("") : std::string();
}

}  // namespace Tovrin
