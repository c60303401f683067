#include "json/JSONWrapper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "host/Data.h"
#include "json/JsonArray.h"
#include "tests/json/JSONWrapperSupport.h"
#include "tests/support/HostJSON.h"

namespace Tovrin::JSON {

// The operations as the host calls them, where the convenience forms hide the buffer.
struct JSONWrapperTestPeer {
  static std::size_t ToString(const JSONWrapper& json, const char* indent, char* buffer,
                              std::size_t size) {
    return json.Interface_ToString(indent, buffer, size);
  }
  static std::size_t GetString(const JSONWrapper& json, const char* key, char* buffer,
                               std::size_t size, bool* ok) {
    return json.Interface_GetString(key, buffer, size, ok);
  }
  static std::size_t AsString(const JSONWrapper& json, char* buffer, std::size_t size, bool* ok) {
    return json.Interface_AsString(buffer, size, ok);
  }
  static std::size_t GetErrorMessage(const JSONWrapper& json, char* buffer, std::size_t size,
                                     bool* ok) {
    return json.Interface_GetErrorMessage(buffer, size, ok);
  }
};

namespace {

TEST(JSONWrapper, ConstructorsMakeWhatTheySay) {
  EXPECT_EQ(JSONWrapper::CreateNull()->ToString(), "null");
  EXPECT_EQ(JSONWrapper::CreateObject()->ToString(), "{}");
  EXPECT_EQ(JSONWrapper::CreateArray()->ToString(), "[]");
  EXPECT_EQ(Wrapper(new JSONWrapper(static_cast<JsonValue*>(nullptr)))->ToString(), "null");
  EXPECT_EQ(Wrapper(new JSONWrapper("[1]"))->ToString(), "[1]");

  const Wrapper bad(new JSONWrapper("["));
  EXPECT_EQ(bad->GetErrorStatus(), kError);
  EXPECT_EQ(bad->ToString(), "null");

  JsonValue* node = new JsonArray;
  const CUsePtr<JsonValue> held(node);
  const Wrapper shares(new JSONWrapper(held));
  EXPECT_EQ(node->UseCount(), 2);
  shares->PushBack(true);
  EXPECT_EQ(static_cast<JsonArray*>(node)->Size(), 1u);
}

TEST(JSONWrapper, ACopyIsDeepAndTakesTheErrorAlong) {
  const Wrapper source = Of("[1]");
  EXPECT_FALSE(source->At(5));
  const Wrapper copy(new JSONWrapper(source.get()));
  ExpectError(*copy.get(), kError, "Index is out of bounds");
  copy->PushBack(true);
  EXPECT_EQ(source->ToString(), "[1]");

  const Wrapper ofNothing(new JSONWrapper(static_cast<const JSONWrapper*>(nullptr)));
  ExpectError(*ofNothing.get(), kError, "Can't copy NULL object");
  EXPECT_TRUE(ofNothing->IsNull());

  const Wrapper shared(new JSONWrapper(source->SharedData()));
  shared->PushBack(false);
  EXPECT_EQ(source->ToString(), "[1,false]");
}

TEST(JSONWrapper, FromStringIsEmptyForWhatIsNoJSON) {
  EXPECT_FALSE(JSONWrapper::FromString(nullptr));
  EXPECT_FALSE(JSONWrapper::FromString(""));
  EXPECT_FALSE(JSONWrapper::FromString("{"));
  EXPECT_FALSE(JSONWrapper::FromString(std::string(), false));
  EXPECT_EQ(JSONWrapper::FromString(R"({"b":1,"a":2})")->ToString(), R"({"b":1,"a":2})");
  EXPECT_TRUE(JSONWrapper::FromString(std::string("{}"), false));
}

TEST(JSONWrapper, WithoutAValueEveryOperationIsNeutral) {
  const Wrapper none = None();
  const Wrapper other = Of("1");
  bool truth = true;
  double real = 1;
  std::int64_t integer = 1;
  std::string text = "x";
  char bytes[16] = {};
  EXPECT_FALSE(none->ParseText("1", true));
  EXPECT_FALSE(none->LessThan(other.get()) || none->Equals(other.get()));
  EXPECT_FALSE(other->LessThan(none.get()) || other->Equals(none.get()));
  EXPECT_EQ(none->ToString(), "");
  EXPECT_FALSE(none->FindNodePath("") || none->ElementMatching("a", "b") || none->Get("a"));
  EXPECT_EQ(none->Size(), 0u);
  EXPECT_TRUE(none->Empty());
  EXPECT_FALSE(none->GetBoolean("a", &truth) || truth);
  EXPECT_FALSE(none->AsDouble(&real) || real != 0);
  EXPECT_FALSE(none->AsInt64(&integer) || integer != 0);
  EXPECT_FALSE(none->AsString(text) || !text.empty());
  EXPECT_FALSE(none->Has("a") || none->At(0) || none->PushBack(true) || none->PushBack("a"));
  EXPECT_FALSE(none->PushBack(other.get()) || none->ReplaceAt(0, other.get()));
  EXPECT_FALSE(none->Remove(std::size_t{0}) || none->Remove("a"));
  EXPECT_FALSE(none->IsNull() || none->IsInt() || none->Set("a", true) || none->SetNull("a"));
  EXPECT_FALSE(none->ForEach([](const char*, const IJSON*, void*) { return true; }, nullptr));
  EXPECT_FALSE(none->Clone());
  EXPECT_EQ(none->Serialize(bytes, sizeof bytes), 8);
  EXPECT_EQ(none->Deserialize(bytes, 8), -1);
  EXPECT_FALSE(none->FromData(nullptr));
  EXPECT_EQ(AutoRefPtr<IDataRef>(none->ToMsgPack())->GetSize(), 0u);
  EXPECT_FALSE(other->PushBack(none.get()));
  ExpectError(*none.get(), kError, "");
}

// Of an array, so that each of them is one without a message of its own.
TEST(JSONWrapper, EveryOperationForgetsTheLastFailure) {
  using Operation = void (*)(JSONWrapper&);
  static bool truth;
  static double real;
  static std::int32_t i32;
  static std::uint32_t u32;
  static std::int64_t i64;
  static std::uint64_t u64;
  static std::string text;
  static const Json foreign(new TextJSON("1"));
  const Operation operations[] = {
      [](JSONWrapper& json) { json.Parse(nullptr); },
      [](JSONWrapper& json) { json.ParseText("[]", true); },
      [](JSONWrapper& json) { json.LessThan(nullptr); },
      [](JSONWrapper& json) { json.Equals(nullptr); },
      [](JSONWrapper& json) { json.ToString(); },
      [](JSONWrapper& json) { json.ToCachedString(); },
      [](JSONWrapper& json) { json.FindNodePath(nullptr); },
      [](JSONWrapper& json) { json.ElementMatching("a", "b"); },
      [](JSONWrapper& json) { json.ElementMatching("a", 1.0); },
      [](JSONWrapper& json) { json.Size(); },
      [](JSONWrapper& json) { json.Empty(); },
      [](JSONWrapper& json) { json.GetString(nullptr, text); },
      [](JSONWrapper& json) { json.GetDouble(nullptr, &real); },
      [](JSONWrapper& json) { json.GetDouble("a", nullptr); },
      [](JSONWrapper& json) { json.Get(nullptr); },
      [](JSONWrapper& json) { json.Has("a"); },
      [](JSONWrapper& json) { json.At(0); },
      [](JSONWrapper& json) { json.PushBack(true); },
      [](JSONWrapper& json) { json.PushBack("a"); },
      [](JSONWrapper& json) { json.PushBack(1.5); },
      [](JSONWrapper& json) { json.PushBack(foreign.get()); },
      [](JSONWrapper& json) { json.Remove(std::size_t{0}); },
      [](JSONWrapper& json) { json.Remove(static_cast<const char*>(nullptr)); },
      [](JSONWrapper& json) { json.AsBool(&truth); },
      [](JSONWrapper& json) { json.AsDouble(&real); },
      [](JSONWrapper& json) { json.AsInt(&i32); },
      [](JSONWrapper& json) { json.AsUInt(&u32); },
      [](JSONWrapper& json) { json.AsInt64(&i64); },
      [](JSONWrapper& json) { json.AsUInt64(&u64); },
      [](JSONWrapper& json) { json.AsString(text); },
      [](JSONWrapper& json) { json.IsNull(); },
      [](JSONWrapper& json) { json.IsInt(); },
      [](JSONWrapper& json) { json.Set("a", foreign.get()); },
      [](JSONWrapper& json) { json.ReplaceAt(9, &json); },
      [](JSONWrapper& json) { json.Clone(); },
      [](JSONWrapper& json) { json.SerializedSize(); },
      [](JSONWrapper& json) { json.Serialize(nullptr, 0); },
      [](JSONWrapper& json) { json.Deserialize(nullptr, 0); },
      [](JSONWrapper& json) { AutoRefPtr<IDataRef>(json.ToMsgPack()); },
  };
  for (const Operation operation : operations) {
    SCOPED_TRACE(&operation - operations);
    const Wrapper json = Of("[1,2]");
    EXPECT_FALSE(json->At(9));
    ExpectError(*json.get(), kError, "Index is out of bounds");
    ExpectError(*json.get(), kError, "Index is out of bounds");  // asking forgets nothing
    operation(*json.get());
    ExpectClean(*json.get());
  }
}

TEST(JSONWrapper, ParseReplacesTheValueOrKeepsItWithAMessage) {
  const Wrapper json = Of("[1]");
  EXPECT_TRUE(json->Parse(nullptr));
  EXPECT_EQ(json->ToString(), "[1]");
  EXPECT_FALSE(json->Parse("{"));
  ExpectError(*json.get(), kError, "JSON parse error in line 0: illegal object");
  EXPECT_EQ(json->ToString(), "[1]");
  ExpectClean(*json.get());
  EXPECT_FALSE(json->Parse("\n\n["));
  EXPECT_EQ(json->GetErrorMessage().find("JSON parse error in line 2: "), 0u);
  EXPECT_FALSE(json->Parse(""));
  EXPECT_EQ(json->GetErrorMessage().find("JSON parse error in line 0: "), 0u);
  EXPECT_TRUE(json->Parse(R"({"z":1,"a":2})"));
  EXPECT_EQ(json->ToString(), R"({"z":1,"a":2})");
}

TEST(JSONWrapper, TextsTellTheirSizeAndAreCopiedWhereTheyFit) {
  const Wrapper json = Of("[1,2]");
  for (const std::size_t size : {0u, 5u, 6u}) {
    SCOPED_TRACE(size);
    char buffer[8] = "xxxxxxx";
    EXPECT_EQ(JSONWrapperTestPeer::ToString(*json.get(), nullptr, buffer, size), 6u);
    EXPECT_STREQ(buffer, size == 6 ? "[1,2]" : "xxxxxxx");
  }
  EXPECT_EQ(JSONWrapperTestPeer::ToString(*json.get(), nullptr, nullptr, 0), 6u);
  EXPECT_EQ(JSONWrapperTestPeer::ToString(*json.get(), nullptr, nullptr, 100), 6u);
  EXPECT_EQ(json->ToString("  "), "[\n  1,\n  2\n]");
  EXPECT_EQ(json->ToCachedString(nullptr), "[1,2]");
}

TEST(JSONWrapper, TextGettersAnswerLengthAndOneAndTellFailuresApart) {
  using Peer = JSONWrapperTestPeer;
  const Wrapper json = Of(R"({"a":"four"})");
  char buffer[8] = "xxxxxxx";
  bool ok = false;
  EXPECT_EQ(Peer::GetString(*json.get(), "a", buffer, 4, &ok), 5u);
  EXPECT_TRUE(ok);
  EXPECT_STREQ(buffer, "xxxxxxx");
  EXPECT_EQ(Peer::GetString(*json.get(), "a", buffer, 5, nullptr), 5u);
  EXPECT_STREQ(buffer, "four");
  EXPECT_EQ(Peer::GetString(*json.get(), "b", buffer, 0, &ok), 1u);
  EXPECT_FALSE(ok);
  EXPECT_STREQ(buffer, "four");
  EXPECT_EQ(Peer::GetString(*json.get(), "b", buffer, 1, nullptr), 1u);
  EXPECT_STREQ(buffer, "");
  ok = true;
  EXPECT_EQ(Peer::AsString(*None().get(), buffer, 1, &ok), 1u);
  EXPECT_FALSE(ok);
  EXPECT_EQ(Peer::AsString(*json.get(), nullptr, 0, &ok), 13u);
  EXPECT_TRUE(ok);
  EXPECT_FALSE(json->At(0));
  EXPECT_EQ(Peer::GetErrorMessage(*json.get(), nullptr, 0, &ok), 1u);
  EXPECT_TRUE(ok);
}

TEST(JSONWrapper, LongTextsComeWholeThroughTheConvenienceForms) {
  for (const std::size_t size : {1021u, 1022u, 1023u, 1024u, 5000u}) {
    SCOPED_TRACE(size);
    const std::string text(size, 'y');
    const Wrapper json = JSONWrapper::CreateArray();
    json->PushBack(text.c_str());
    EXPECT_EQ(json->ToString(), "[\"" + text + "\"]");
    std::string read;
    EXPECT_TRUE(json->At(0)->AsString(read));
    EXPECT_EQ(read, text);
  }
  std::string cut;
  EXPECT_TRUE(Of(R"("a\u0000b")")->AsString(cut));
  EXPECT_EQ(cut, "a");
}

TEST(JSONWrapper, ComparesOnlyWithItsOwnKind) {
  const Wrapper one = Of("1");
  EXPECT_TRUE(one->Equals(Of("1").get()));
  EXPECT_FALSE(one->Equals(Of("1.0").get()));
  EXPECT_TRUE(one->LessThan(Of("\"10\"").get()));
  EXPECT_FALSE(one->LessThan(one.get()));
  EXPECT_TRUE(Of("\"a\"")->LessThan(Of("\"\u00e9\"").get()));
  const Json foreign(new TextJSON("1"));
  EXPECT_FALSE(one->Equals(foreign.get()) || one->LessThan(foreign.get()));
  EXPECT_FALSE(one->Equals(nullptr) || one->LessThan(nullptr));
}

TEST(JSONWrapper, SizeAndEmptinessGoByType) {
  const struct {
    const char* json;
    std::size_t size;
    bool isEmpty;
  } kRows[] = {{"[]", 0, true},          {"[1,2]", 2, false}, {"{}", 0, true},
               {R"({"a":1})", 1, false}, {"null", 0, true},   {"\"\"", 0, true},
               {"0", 0, false},          {"false", 0, false}, {"\"a\"", 0, false}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.json);
    EXPECT_EQ(Of(row.json)->Size(), row.size);
    EXPECT_EQ(Of(row.json)->Empty(), row.isEmpty);
  }
  EXPECT_EQ(Compiled()->Size(), 1u);
}

TEST(JSONWrapper, ConversionsAreThoseOfTheValue) {
  bool truth = false;
  double real = 0;
  std::int32_t i32 = 0;
  std::uint32_t u32 = 0;
  std::int64_t i64 = 1;
  std::uint64_t u64 = 1;
  EXPECT_TRUE(Of("true")->AsBool(&truth) && truth);
  EXPECT_TRUE(Of("1.5")->AsDouble(&real) && real == 1.5);
  EXPECT_TRUE(Of("-7")->AsInt(&i32) && i32 == -7);
  EXPECT_TRUE(Of("4294967295")->AsUInt(&u32) && u32 == 4294967295u);
  EXPECT_TRUE(Of("\"9\"")->AsInt64(&i64) && i64 == 9);
  EXPECT_TRUE(Of("9")->AsUInt64(&u64) && u64 == 9);
  const Wrapper most = Of("18446744073709551615");
  EXPECT_TRUE(most->IsInt64());
  EXPECT_FALSE(most->AsInt64(&i64) || i64 != 0);
  EXPECT_FALSE(most->AsUInt64(&u64) || u64 != 0);
  EXPECT_FALSE(most->AsInt64(nullptr) || most->AsBool(nullptr));
}

TEST(JSONWrapper, TypeTestsGoByTypeAndRange) {
  const struct {
    const char* json;
    const char* kinds;
  } kRows[] = {
      {"null", "null "},
      {"true", "bool "},
      {"false", "bool "},
      {"1.0", "number double "},
      {"1", "number int uint int64 uint64 "},
      {"-1", "number int int64 "},
      {"2147483648", "number uint int64 uint64 "},
      {"4294967296", "number int64 uint64 "},
      {"18446744073709551615", "number int64 "},
      {"\"1\"", "string "},
      {"[]", "array "},
      {"{}", "object "},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.json);
    const Wrapper json = Of(row.json);
    std::string kinds;
    if (json->IsNull()) kinds += "null ";
    if (json->IsBool()) kinds += "bool ";
    if (json->IsNumber()) kinds += "number ";
    if (json->IsDouble()) kinds += "double ";
    if (json->IsInt()) kinds += "int ";
    if (json->IsUInt()) kinds += "uint ";
    if (json->IsInt64()) kinds += "int64 ";
    if (json->IsUInt64()) kinds += "uint64 ";
    if (json->IsString()) kinds += "string ";
    if (json->IsArray()) kinds += "array ";
    if (json->IsObject()) kinds += "object ";
    EXPECT_EQ(kinds, row.kinds);
  }
  EXPECT_FALSE(Compiled()->IsObject());  // Contract: by this test it is none
}

TEST(JSONWrapper, SerialisedBytesCarryTheirLength) {
  const Wrapper json = Of(R"({"a":[1,2]})");
  char buffer[64];
  ASSERT_EQ(json->SerializedSize(), 19u);
  EXPECT_EQ(json->Serialize(buffer, 18), -1);
  EXPECT_EQ(json->Serialize(nullptr, 100), -1);
  ASSERT_EQ(json->Serialize(buffer, 19), 19);
  std::uint64_t length = 0;
  std::memcpy(&length, buffer, 8);
  EXPECT_EQ(length, 11u);

  const Wrapper back = JSONWrapper::CreateNull();
  EXPECT_EQ(back->Deserialize(buffer, sizeof buffer), 19);
  EXPECT_TRUE(back->Equals(json.get()));
  for (const std::size_t size : {0u, 7u, 8u, 18u}) EXPECT_EQ(back->Deserialize(buffer, size), -1);
  EXPECT_EQ(back->Deserialize(nullptr, 19), -1);
  for (const std::uint64_t bad : {std::uint64_t{12}, std::uint64_t{0}, ~std::uint64_t{0}}) {
    std::memcpy(buffer, &bad, 8);
    EXPECT_EQ(back->Deserialize(buffer, 19), -1) << bad;
  }
  EXPECT_TRUE(back->Equals(json.get()));
}

// A reference whose bytes do not lie in one piece, and that may have fewer than it says.
class Scattered final : public InterfaceImpl<IDataRef> {
public:
  Scattered(std::string bytes, std::size_t missing) : fBytes(std::move(bytes)), fMissing(missing) {}

private:
  std::size_t Interface_GetSize() const override { return fBytes.size() + fMissing; }
  void Interface_Assign(const void*, std::size_t) override {}
  std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t offset) const override {
    if (offset >= fBytes.size()) return 0;
    return fBytes.copy(static_cast<char*>(buffer), size, offset);
  }
  std::uint8_t Interface_IsEqual(const IDataRef*) const override { return 0; }
  IDataRef* Interface_Clone() const override { return nullptr; }

  const std::string fBytes;
  const std::size_t fMissing;
};

TEST(JSONWrapper, MsgPackGoesThroughDataReferences) {
  const Wrapper json = Of(R"({"a":[1,"x"]})");
  const AutoRefPtr<IDataRef> data(json->ToMsgPack());
  const std::string bytes(static_cast<const char*>(data->GetData()), data->GetSize());
  EXPECT_EQ(bytes,
            "\x81\xa1"
            "a\x92\x01\xa1"
            "x");

  const Wrapper back = JSONWrapper::CreateNull();
  EXPECT_TRUE(back->FromData(data.get()));
  EXPECT_TRUE(back->Equals(json.get()));
  EXPECT_TRUE(back->Parse("1"));
  EXPECT_TRUE(back->FromData(AutoRefPtr<IDataRef>(new Scattered(bytes, 0)).get()));
  EXPECT_TRUE(back->Equals(json.get()));

  const Wrapper large = Of(("[\"" + std::string(200'000, 'x') + "\"]").c_str());
  const AutoRefPtr<IDataRef> packed(large->ToMsgPack());
  const std::string manyBytes(static_cast<const char*>(packed->GetData()), packed->GetSize());
  EXPECT_TRUE(back->FromData(AutoRefPtr<IDataRef>(new Scattered(manyBytes, 0)).get()));
  EXPECT_TRUE(back->Equals(large.get()));
  EXPECT_TRUE(back->FromData(data.get()));

  // A size that is a lie is no reason to make room for it.
  for (const std::size_t missing : {std::size_t{1}, SIZE_MAX - bytes.size()}) {
    EXPECT_FALSE(back->FromData(AutoRefPtr<IDataRef>(new Scattered(bytes, missing)).get()));
    ExpectError(*back.get(), kError, "reading from MsgPack failed");
  }
  EXPECT_FALSE(back->FromData(AutoRefPtr<IDataRef>(new Data("\xc1")).get()));
  ExpectError(*back.get(), kError, "reading from MsgPack failed");
  EXPECT_FALSE(back->FromData(nullptr));
  ExpectError(*back.get(), kError, "reading from MsgPack failed");
  EXPECT_TRUE(back->Equals(json.get()));
}

}  // namespace
}  // namespace Tovrin::JSON
