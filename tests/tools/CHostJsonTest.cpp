#include "tools/tovrin/objects/CHostJson.h"

#include <gtest/gtest.h>

namespace RefHost {
namespace {

using Tovrin::AutoRefPtr;
using Tovrin::IUserDefinedType;
using Tovrin::JSON::JSONWrapper;

constexpr Tovrin::TypeId kType = 30;

AutoRefPtr<IUserDefinedType> Json(const char* text) {
  const AutoRefPtr<IUserDefinedType> value(CHostJson::Create(kType));
  const auto json = JSONWrapper::CreateObject();
  EXPECT_TRUE(json->Parse(text));
  EXPECT_TRUE(value->Deserialize(json.get()));
  return value;
}

std::string TextOf(const AutoRefPtr<IUserDefinedType>& value) {
  return value->Serialize()->ToString();
}

TEST(CHostJson, StartsAsAnEmptyObjectOfItsType) {
  const AutoRefPtr<IUserDefinedType> value(CHostJson::Create(kType));
  EXPECT_STREQ(value->GetName(), "JSON");
  EXPECT_EQ(value->GetType(), kType);
  EXPECT_EQ(TextOf(value), "{}");
}

TEST(CHostJson, TakesAndGivesItsValueAsText) {
  const auto value = Json(R"({"a":[1,true]})");
  EXPECT_EQ(TextOf(value), R"({"a":[1,true]})");
  EXPECT_FALSE(value->Deserialize(nullptr));
  EXPECT_EQ(TextOf(value), R"({"a":[1,true]})");
}

TEST(CHostJson, IsClonedWithItsValueAndType) {
  const auto value = Json(R"({"a":1})");
  const auto clone = value->Clone();
  EXPECT_EQ(clone->GetType(), kType);
  EXPECT_EQ(TextOf(clone), R"({"a":1})");
  EXPECT_TRUE(clone->IsEqual(value.get()));
  EXPECT_TRUE(clone->Deserialize(JSONWrapper::CreateObject().get()));
  EXPECT_EQ(TextOf(value), R"({"a":1})");
}

TEST(CHostJson, HasAnOrder) {
  const auto less = Json(R"({"a":1})");
  const auto more = Json(R"({"a":2})");
  EXPECT_NE(less->LessThan(more.get()), more->LessThan(less.get()));
  EXPECT_FALSE(less->LessThan(less.get()));
  EXPECT_FALSE(less->LessThan(nullptr));
  EXPECT_FALSE(less->IsEqual(more.get()));
}

TEST(CHostJson, HasNoBinaryForm) {
  const auto value = Json(R"({"a":1})");
  void* bytes = nullptr;
  EXPECT_FALSE(value->FromBinaryData("a", 1, 0));
  EXPECT_EQ(value->ToBinaryData(&bytes, 0), 0u);
}

}  // namespace
}  // namespace RefHost
