#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "host/IJSON.h"
#include "host/InterfaceImpl.h"

// Answers every operation with nothing; tests override what they need.
class NeutralJSON : public Tovrin::InterfaceImpl<Tovrin::IJSON> {
protected:
  std::size_t Interface_ToString(const char*, char*, std::size_t) const override { return {}; }
  bool Interface_Parse(const char*) override { return {}; }
  bool Interface_LessThan(const Tovrin::IJSON*) const override { return {}; }
  bool Interface_Equals(const Tovrin::IJSON*) const override { return {}; }
  std::size_t Interface_ToCachedString(const char*, char*, std::size_t) const override {
    return {};
  }
  Tovrin::IJSON* Interface_FindNodePath(const char*) const override { return {}; }
  Tovrin::IJSON* Interface_ElementMatching(const char*, const char*) const override { return {}; }
  Tovrin::IJSON* Interface_ElementMatching(const char*, double) const override { return {}; }
  std::size_t Interface_Size() const override { return {}; }
  bool Interface_Empty() const override { return {}; }
  std::size_t Interface_GetString(const char*, char*, std::size_t, bool*) const override {
    return {};
  }
  bool Interface_GetDouble(const char*, double*) const override { return {}; }
  bool Interface_GetInt(const char*, std::int32_t*) const override { return {}; }
  bool Interface_GetUInt(const char*, std::uint32_t*) const override { return {}; }
  bool Interface_GetInt64(const char*, std::int64_t*) const override { return {}; }
  bool Interface_GetUInt64(const char*, std::uint64_t*) const override { return {}; }
  bool Interface_GetBoolean(const char*, bool*) const override { return {}; }
  Tovrin::IJSON* Interface_Get(const char*) const override { return {}; }
  bool Interface_Has(const char*) const override { return {}; }
  Tovrin::IJSON* Interface_At(std::size_t) const override { return {}; }
  bool Interface_PushBack(bool) override { return {}; }
  bool Interface_PushBack(const char*) override { return {}; }
  bool Interface_PushBack(double) override { return {}; }
  bool Interface_PushBack(const Tovrin::IJSON*) override { return {}; }
  Tovrin::IJSON* Interface_Remove(std::size_t) override { return {}; }
  Tovrin::IJSON* Interface_Remove(const char*) override { return {}; }
  bool Interface_AsBool(bool*) const override { return {}; }
  bool Interface_AsDouble(double*) const override { return {}; }
  bool Interface_AsInt(std::int32_t*) const override { return {}; }
  bool Interface_AsUInt(std::uint32_t*) const override { return {}; }
  bool Interface_AsInt64(std::int64_t*) const override { return {}; }
  bool Interface_AsUInt64(std::uint64_t*) const override { return {}; }
  std::size_t Interface_AsString(char*, std::size_t, bool*) const override { return {}; }
  bool Interface_IsNull() const override { return {}; }
  bool Interface_IsBool() const override { return {}; }
  bool Interface_IsNumber() const override { return {}; }
  bool Interface_IsDouble() const override { return {}; }
  bool Interface_IsInt() const override { return {}; }
  bool Interface_IsUInt() const override { return {}; }
  bool Interface_IsInt64() const override { return {}; }
  bool Interface_IsUInt64() const override { return {}; }
  bool Interface_IsString() const override { return {}; }
  bool Interface_IsArray() const override { return {}; }
  bool Interface_IsObject() const override { return {}; }
  bool Interface_Set(const char*, bool) override { return {}; }
  bool Interface_Set(const char*, double) override { return {}; }
  bool Interface_Set(const char*, std::int32_t) override { return {}; }
  bool Interface_Set(const char*, std::uint32_t) override { return {}; }
  bool Interface_Set(const char*, std::int64_t) override { return {}; }
  bool Interface_Set(const char*, std::uint64_t) override { return {}; }
  bool Interface_Set(const char*, const char*) override { return {}; }
  bool Interface_Set(const char*, const Tovrin::IJSON*) override { return {}; }
  bool Interface_SetNull(const char*) override { return {}; }
  bool Interface_ReplaceAt(std::size_t, const Tovrin::IJSON*) override { return {}; }
  bool Interface_ForEach(ForEachErrorFn, void*, char*, std::size_t) const override { return {}; }
  bool Interface_ForEach(ForEachFn, void*) const override { return {}; }
  bool Interface_ForEach(ForEachFn, void*, Tovrin::IContext*) const override { return {}; }
  Tovrin::IJSON* Interface_Clone() const override { return {}; }
  std::size_t Interface_SerializedSize() const override { return {}; }
  std::int64_t Interface_Deserialize(const void*, std::size_t) override { return {}; }
  std::int64_t Interface_Serialize(void*, std::size_t) const override { return {}; }
  std::uint8_t Interface_GetErrorStatus() const override { return {}; }
  std::size_t Interface_GetErrorMessage(char*, std::size_t, bool*) const override { return {}; }
};

// A JSON value for tests that knows its text and nothing else, and how its text was asked for.
class TextJSON final : public NeutralJSON {
public:
  explicit TextJSON(std::string text) : fText(std::move(text)) {}

  // The buffer sizes that ToString was called with, in order.
  mutable std::vector<std::size_t> sizesOffered;
  // The indents, likewise.
  mutable std::vector<std::string> indents;

private:
  std::size_t Interface_ToString(const char* indent, char* buffer,
                                 std::size_t size) const override {
    sizesOffered.push_back(size);
    indents.emplace_back(indent ? indent : "(null)");
    if (size > fText.size()) std::memcpy(buffer, fText.c_str(), fText.size() + 1);
    return fText.size() + 1;
  }

  const std::string fText;
};
