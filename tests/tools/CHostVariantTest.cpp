#include "tools/tovrin/objects/CHostVariant.h"

#include <gtest/gtest.h>

#include "host/Data.h"
#include "tools/tovrin/objects/CHostContainers.h"
#include "tools/tovrin/objects/CHostStream.h"

namespace RefHost {
namespace {

using Tovrin::AutoRefPtr;

class CHostVariantTest : public ::testing::Test {
protected:
  AutoRefPtr<CHostVariant> New(Tovrin::TypeId type) { return CHostVariant::Create(fTypes, type); }

  const std::shared_ptr<CTypeTable> fTypes = std::make_shared<CTypeTable>();
};

TEST_F(CHostVariantTest, StartsWithTheEmptyValueOfItsType) {
  EXPECT_FALSE(New(Tovrin::kTypeBoolean)->GetBoolean());
  EXPECT_EQ(New(Tovrin::kTypeNumber)->GetNumber(), 0);
  EXPECT_STREQ(New(Tovrin::kTypeString)->GetString(), "");
  EXPECT_EQ(New(Tovrin::kTypeDataRef)->GetData()->GetSize(), 0u);
  EXPECT_EQ(New(Tovrin::kTypeStream)->GetStream()->GetCurrentSize(), 0u);
  EXPECT_FALSE(New(Tovrin::kFirstUserType)->GetUserDefined());
  for (Tovrin::TypeId scalar = 1; scalar <= 21; scalar += 4) {
    EXPECT_EQ(New(scalar + 1)->GetVector()->GetElementType(), scalar);
    EXPECT_EQ(New(scalar + 2)->GetMap()->GetKeyType(), Tovrin::kTypeNumber);
    EXPECT_EQ(New(scalar + 3)->GetMap()->GetKeyType(), Tovrin::kTypeString);
    EXPECT_EQ(New(scalar + 3)->GetMap()->GetMappedValueType(), scalar);
    for (Tovrin::TypeId type = scalar; type < scalar + 4; ++type) {
      EXPECT_EQ(New(type)->GetType(), type);
      EXPECT_EQ(New(type)->GetTypeAsString(nullptr), fTypes->NameOf(type));
    }
  }
}

TEST_F(CHostVariantTest, TakesTheTypeOfWhatIsAssigned) {
  const auto variant = New(Tovrin::kTypeBoolean);
  variant->AssignNumber(2.5);
  EXPECT_EQ(variant->GetType(), Tovrin::kTypeNumber);
  EXPECT_EQ(variant->GetNumber(), 2.5);
  EXPECT_FALSE(variant->GetBoolean());
  variant->AssignString("a\0b", 3);
  EXPECT_EQ(variant->GetType(), Tovrin::kTypeString);
  EXPECT_EQ(variant->GetStringSize(), 3u);
  EXPECT_EQ(variant->GetNumber(), 0);
  variant->AssignString(nullptr, 0);
  EXPECT_STREQ(variant->GetString(), "");
  variant->AssignVector(New(Tovrin::kTypeNumber + Tovrin::kVectorOf)->GetVector());
  EXPECT_EQ(variant->GetType(), Tovrin::kTypeNumber + Tovrin::kVectorOf);
  variant->AssignMap(New(Tovrin::kTypeString + Tovrin::kNumberMapOf)->GetMap());
  EXPECT_EQ(variant->GetType(), Tovrin::kTypeString + Tovrin::kNumberMapOf);
  EXPECT_FALSE(variant->GetVector());
}

TEST_F(CHostVariantTest, SharesObjectsAndGivesReferencesBack) {
  const AutoRefPtr<Tovrin::IDataRef> data(new Tovrin::Data("abc"));
  {
    const auto variant = New(Tovrin::kTypeDataRef);
    variant->AssignData(data);
    EXPECT_EQ(data->GetCount(), 2);
    const auto again = New(Tovrin::kTypeDataRef);
    again->Assign(variant.get());
    EXPECT_EQ(again->GetData().get(), data.get());
    EXPECT_EQ(data->GetCount(), 3);
  }
  EXPECT_EQ(data->GetCount(), 1);
}

TEST_F(CHostVariantTest, HoldsNothingAfterAReset) {
  const auto variant = New(Tovrin::kTypeString);
  variant->SetText("abc");
  variant->Reset(Tovrin::kTypeString);
  EXPECT_EQ(variant->GetStringSize(), 0u);
  variant->Reset(Tovrin::kTypeString + Tovrin::kVectorOf);
  EXPECT_FALSE(variant->GetVector());
  EXPECT_EQ(variant->GetVectorSize(), 0u);
  EXPECT_EQ(variant->GetMapSize(), 0u);
  variant->Assign(nullptr);
  EXPECT_EQ(variant->GetType(), Tovrin::kTypeString + Tovrin::kVectorOf);
}

TEST_F(CHostVariantTest, ComparesTypeAndValue) {
  const auto text = New(Tovrin::kTypeString);
  text->SetText("a");
  const auto other = New(Tovrin::kTypeString);
  EXPECT_FALSE(text->IsEqual(other.get()));
  other->SetText("a");
  EXPECT_TRUE(text->IsEqual(other.get()));
  EXPECT_FALSE(text->IsEqual(New(Tovrin::kTypeNumber).get()));
  EXPECT_FALSE(text->IsEqual(nullptr));
  for (Tovrin::TypeId type = 1; type <= 24; ++type) {
    const auto one = New(type);
    const AutoRefPtr<Tovrin::IVariant> copy = one->Clone();
    EXPECT_TRUE(one->IsEqual(copy.get())) << type;
    EXPECT_FALSE(one->IsEqual(New(type + 1).get())) << type;
  }
}

TEST_F(CHostVariantTest, HasNoSerialisedFormWithoutAnObject) {
  const auto text = New(Tovrin::kTypeString);
  EXPECT_FALSE(text->Serialize(nullptr));
  EXPECT_FALSE(text->Deserialize(AutoRefPtr<Tovrin::IJSON>(), nullptr));
}

}  // namespace
}  // namespace RefHost
