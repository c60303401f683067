#include "tools/tovrin/objects/CHostContainers.h"

#include <gtest/gtest.h>

#include "tools/tovrin/objects/CHostStream.h"
#include "tools/tovrin/objects/CHostVariant.h"

namespace RefHost {
namespace {

using Tovrin::AutoRefPtr;
using Tovrin::IVariant;

const std::shared_ptr<const CTypeTable>& Types() {
  static const auto types = std::make_shared<const CTypeTable>();
  return types;
}

AutoRefPtr<IVariant> Number(double number) {
  const auto variant = CHostVariant::Create(Types(), Tovrin::kTypeNumber);
  variant->AssignNumber(number);
  return Tovrin::Share<IVariant>(variant.get());
}

AutoRefPtr<IVariant> Text(std::string_view text) {
  const auto variant = CHostVariant::Create(Types(), Tovrin::kTypeString);
  variant->SetText(text);
  return Tovrin::Share<IVariant>(variant.get());
}

TEST(CHostVector, GrowsInPlaceForItsOnlyHolder) {
  AutoRefPtr<const Tovrin::IVectorGeneric> vector(new CHostVector(Tovrin::kTypeNumber));
  const auto* before = vector.get();
  for (int i = 0; i < 3; ++i) vector = vector->Append(Number(i));
  EXPECT_EQ(vector.get(), before);
  EXPECT_EQ(vector->GetCount(), 1);
  EXPECT_EQ(vector->GetSize(), 3u);
  EXPECT_EQ(vector->Get(2)->GetNumber(), 2);
  EXPECT_FALSE(vector->Get(3));
}

TEST(CHostVector, GrowsAsACopyWhereAnotherHoldsIt) {
  const AutoRefPtr<const Tovrin::IVectorGeneric> vector(new CHostVector(Tovrin::kTypeNumber));
  const auto other = vector;
  const auto longer = vector->Append(Number(1));
  EXPECT_NE(longer.get(), vector.get());
  EXPECT_EQ(vector->GetSize(), 0u);
  EXPECT_EQ(longer->GetSize(), 1u);
  EXPECT_EQ(longer->GetCount(), 1);
}

TEST(CHostVector, TakesOnlyElementsOfItsType) {
  AutoRefPtr<const Tovrin::IVectorGeneric> vector(new CHostVector(Tovrin::kTypeNumber));
  vector = vector->Append(Text("a"));
  vector = vector->Append({});
  EXPECT_EQ(vector->GetSize(), 0u);
  EXPECT_EQ(vector->GetCount(), 1);
}

TEST(CHostVector, MayHoldNullsFromItsCreator) {
  CHostVector::Elements elements(2);
  elements[1] = Number(1);
  const AutoRefPtr<const Tovrin::IVectorGeneric> vector(
      new CHostVector(Tovrin::kTypeNumber, std::move(elements)));
  EXPECT_EQ(vector->GetSize(), 2u);
  EXPECT_FALSE(vector->Get(0));
}

TEST(CHostMap, KeepsItsKeysInOrderAndOneOfEach) {
  AutoRefPtr<const Tovrin::IMapGeneric> map(new CHostMap(Tovrin::kTypeNumber, Tovrin::kTypeString));
  const auto* before = map.get();
  map = map->Insert(Number(10), Text("ten"));
  map = map->Insert(Number(2), Text("two"));
  map = map->Insert(Number(10), Text("TEN"));
  EXPECT_EQ(map.get(), before);
  ASSERT_EQ(map->GetSize(), 2u);
  EXPECT_EQ(map->GetKeyAt(0)->GetNumber(), 2);
  EXPECT_STREQ(map->GetValueAt(1)->GetString(), "TEN");
  EXPECT_FALSE(map->GetKeyAt(2));
  EXPECT_FALSE(map->GetValueAt(2));
}

TEST(CHostMap, GrowsAsACopyWhereAnotherHoldsIt) {
  const AutoRefPtr<const Tovrin::IMapGeneric> map(
      new CHostMap(Tovrin::kTypeString, Tovrin::kTypeNumber));
  const auto other = map;
  const auto larger = map->Insert(Text("a"), Number(1));
  EXPECT_EQ(map->GetSize(), 0u);
  EXPECT_EQ(larger->GetSize(), 1u);
  EXPECT_EQ(larger->GetCount(), 1);
  EXPECT_EQ(map->Insert(Number(1), Number(1)).get(), map.get());
  EXPECT_EQ(map->Insert(Text("a"), {}).get(), map.get());
}

AutoRefPtr<IVariant> VectorOf(std::initializer_list<AutoRefPtr<IVariant>> elements) {
  const auto variant = CHostVariant::Create(Types(), Tovrin::kTypeNumber + Tovrin::kVectorOf);
  variant->AssignVector(AutoRefPtr<const Tovrin::IVectorGeneric>(
      new CHostVector(Tovrin::kTypeNumber, CHostVector::Elements(elements))));
  return Tovrin::Share<IVariant>(variant.get());
}

AutoRefPtr<IVariant> MapOf(std::vector<CHostMap::Entry> entries) {
  const auto variant = CHostVariant::Create(Types(), Tovrin::kTypeString + Tovrin::kNumberMapOf);
  variant->AssignMap(AutoRefPtr<const Tovrin::IMapGeneric>(
      new CHostMap(Tovrin::kTypeNumber, Tovrin::kTypeString, std::move(entries))));
  return Tovrin::Share<IVariant>(variant.get());
}

TEST(SameValue, ComparesContainersByTheirElements) {
  const auto empty = VectorOf({});
  const auto one = VectorOf({Number(1)});
  EXPECT_TRUE(one->IsEqual(one.get()));
  EXPECT_TRUE(one->IsEqual(VectorOf({Number(1)}).get()));
  EXPECT_FALSE(one->IsEqual(empty.get()));
  EXPECT_FALSE(one->IsEqual(VectorOf({Number(2)}).get()));
  EXPECT_FALSE(one->IsEqual(VectorOf({{}}).get()));
  EXPECT_TRUE(VectorOf({{}})->IsEqual(VectorOf({{}}).get()));
  EXPECT_FALSE(one->IsEqual(Number(1).get()));
  EXPECT_FALSE(one->IsEqual(nullptr));

  const auto map = MapOf({{Number(1), Text("a")}});
  EXPECT_TRUE(map->IsEqual(MapOf({{Number(1), Text("a")}}).get()));
  EXPECT_FALSE(map->IsEqual(MapOf({}).get()));
  EXPECT_FALSE(map->IsEqual(MapOf({{Number(2), Text("a")}}).get()));
  EXPECT_FALSE(map->IsEqual(MapOf({{Number(1), Text("b")}}).get()));
  EXPECT_FALSE(map->IsEqual(one.get()));
}

// Containers reach a module as elements alone.
TEST(CHostContainers, HaveNoSerialForm) {
  const AutoRefPtr<const Tovrin::IVectorGeneric> vector(new CHostVector(Tovrin::kTypeNumber));
  const AutoRefPtr<const Tovrin::IMapGeneric> map(
      new CHostMap(Tovrin::kTypeNumber, Tovrin::kTypeString));
  AutoRefPtr<const Tovrin::IVectorGeneric> readVector;
  AutoRefPtr<const Tovrin::IMapGeneric> readMap;
  EXPECT_EQ(vector->GetElementType(), Tovrin::kTypeNumber);
  EXPECT_FALSE(vector->Serialize(nullptr));
  EXPECT_FALSE(vector->Deserialize({}, nullptr, &readVector));
  EXPECT_EQ(map->GetKeyType(), Tovrin::kTypeNumber);
  EXPECT_EQ(map->GetMappedValueType(), Tovrin::kTypeString);
  EXPECT_FALSE(map->Serialize(nullptr));
  EXPECT_FALSE(map->Deserialize({}, nullptr, &readMap));
}

TEST(CHostStream, WaitsForNothing) {
  const AutoRefPtr<Tovrin::IStream> stream(new CHostStream("abc"));
  EXPECT_FALSE(stream->NeedMoreData({}, 10));
}

TEST(CHostStream, ReadsFromWhereItIsAskedTo) {
  const AutoRefPtr<Tovrin::IStream> stream(new CHostStream("abcdef"));
  char buffer[8] = {};
  EXPECT_EQ(stream->Read(buffer, 3, 2), 3u);
  EXPECT_STREQ(buffer, "cde");
  EXPECT_EQ(stream->Read(buffer, 8, 5), 1u);
  EXPECT_EQ(stream->Read(buffer, 8, 6), 0u);
  EXPECT_EQ(stream->Read(buffer, 0, 0), 0u);
  EXPECT_TRUE(stream->IsFinished());
}

TEST(CHostStream, ForgetsWhatIsDiscardedAndKeepsCounting) {
  const AutoRefPtr<Tovrin::IStream> stream(new CHostStream("abcdef"));
  stream->DiscardBefore(4);
  stream->DiscardBefore(2);
  char buffer[8] = {};
  EXPECT_EQ(stream->Read(buffer, 8, 3), 0u);
  EXPECT_EQ(stream->Read(buffer, 8, 4), 2u);
  EXPECT_EQ(stream->GetCurrentSize(), 6u);
  stream->DiscardBefore(100);
  EXPECT_EQ(stream->Read(buffer, 8, 6), 0u);
}

}  // namespace
}  // namespace RefHost
