#include "Common/ConstVariants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/VariantPairs.h"
#include "tests/Common/VariantSupport.h"
#include "tests/support/AllocationCount.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;
using Selvane::IVariant;

class CEmptyConstant final : public AEmptyVariant {};

struct ConstantRow {
  const char* name;
  IVariant* constant;
  CVariant value;  // what it stands for
};

std::vector<ConstantRow> Constants() {
  static CEmptyConstant empty;
  return {
      {"true", MakeConstBool(true), CVariant(true)},
      {"false", MakeConstBool(false), CVariant(false)},
      {"0", MakeConstLong(0), CVariant(std::int64_t{0})},
      {"-1", MakeConstLong(-1), CVariant(std::int64_t{-1})},
      {"empty text", MakeConstEmptyString(), CVariant(String)},
      {"nothing", &empty, CVariant()},
  };
}

TEST(ConstVariants, ReadAsTheirValues) {
  Reports reports;
  for (const ConstantRow& row : Constants()) {
    SCOPED_TRACE(row.name);
    const IVariant& constant = *row.constant;
    EXPECT_EQ(constant.GetType(), row.value.GetType());
    EXPECT_EQ(constant.IsNumberType(), row.value.IsNumberType());
    EXPECT_EQ(constant.GetBool(), row.value.GetBool());
    EXPECT_EQ(constant.GetLong(), row.value.GetType() == Long ? row.value.GetLong() : 0);
    EXPECT_EQ(constant.GetDouble(), 0.0);
    EXPECT_EQ(TakeUtf8(constant.GetString()), TakeUtf8(row.value.GetString()));
    EXPECT_EQ(TakeUtf8(constant.ToString(nullptr)), Utf8(row.value.ToText(nullptr)));
    EXPECT_EQ(constant.GetHash(), row.value.GetHash());
    EXPECT_EQ(constant.GetImplementationId(), 0u);
    EXPECT_THAT(reports.Take(), IsEmpty());

    const CUsePtr<IVariant> clone(constant.Clone());
    EXPECT_EQ(clone->GetImplementationId(), CVariant::kImplementationId);
    EXPECT_EQ(clone->GetType(), row.value.GetType());
    EXPECT_EQ(TakeUtf8(clone->ToString(nullptr)), Utf8(row.value.ToText(nullptr)));
  }
}

TEST(ConstVariants, HaveNothingElse) {
  Reports reports;
  for (const ConstantRow& row : Constants()) {
    SCOPED_TRACE(row.name);
    const IVariant& constant = *row.constant;
    const CVariant value = SampleOf(MixedList);
    const CUsePtr<Selvane::IUnicodeString> text(NewUnicodeString(MakeText("a")));
    std::uint64_t word = 5;
    bool flag = true;
    EXPECT_FALSE(constant.GetIP(&word, &word, &flag));
    EXPECT_FALSE(constant.GetIPRange(&word, &word, &word, &word, &flag));
    EXPECT_FALSE(constant.GetIPListElem(0, &word, &word, &flag));
    EXPECT_FALSE(constant.GetIPRangeListElem(0, &word, &word, &word, &word, &flag));
    EXPECT_EQ(word, 5u);
    EXPECT_TRUE(flag);
    EXPECT_FALSE(constant.IsInRange(&value));
    EXPECT_FALSE(constant.IsInRangeList(&value));
    EXPECT_FALSE(constant.Contains(&value, nullptr));
    EXPECT_FALSE(constant.ContainsAll(&value, nullptr));
    EXPECT_FALSE(constant.ContainsAtLeastOne(&value, nullptr));
    IVariant* result = nullptr;
    EXPECT_FALSE(constant.FindFirstMatching(&value, &result, nullptr));
    EXPECT_EQ(constant.Matches(text.Get(), nullptr), 0);
    EXPECT_FALSE(constant.IsListType());
    EXPECT_FALSE(constant.IsSorted());
    EXPECT_EQ(constant.GetListSize(), 0u);
    EXPECT_EQ(constant.Find(std::int64_t{0}), -1);
    EXPECT_EQ(constant.Find(0.0), -1);
    EXPECT_EQ(constant.Find(false), -1);
    EXPECT_EQ(constant.Find(text.Get()), -1);
    EXPECT_EQ(constant.Find(&value), -1);
    EXPECT_EQ(constant.Find(text.Get(), 0), -1);
    EXPECT_EQ(constant.FindExpression(text.Get()), -1);
    EXPECT_EQ(constant.GetMapValue(text.Get()), nullptr);
    EXPECT_EQ(constant.GetMapSize(), -1);
    EXPECT_EQ(constant.GetMapKeys(), nullptr);

    const auto hasNone = [](auto read, auto neutral) {
      bool ok = true;
      return read(ok) == neutral && !ok;
    };
    EXPECT_TRUE(hasNone([&](bool& ok) { return constant.GetLongListElem(0, ok); }, 0));
    EXPECT_TRUE(hasNone([&](bool& ok) { return constant.GetDoubleListElem(0, ok); }, 0.0));
    EXPECT_TRUE(hasNone([&](bool& ok) { return constant.GetBoolListElem(0, ok); }, false));
    EXPECT_TRUE(hasNone([&](bool& ok) { return constant.GetMixedListElem(0, ok); }, nullptr));
    EXPECT_TRUE(hasNone([&](bool& ok) { return constant.GetMixedListElemRef(0, ok); }, nullptr));
    EXPECT_TRUE(hasNone([&](bool& ok) { return constant.GetNumberListElem(0, ok); }, nullptr));
    EXPECT_TRUE(hasNone([&](bool& ok) { return constant.GetStringListElem(0, ok); }, nullptr));
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(ConstVariants, CannotBeChanged) {
  Reports reports;
  for (const ConstantRow& row : Constants()) {
    SCOPED_TRACE(row.name);
    IVariant& constant = *row.constant;
    const CVariant value = SampleOf(MixedList);
    const CUsePtr<Selvane::IUnicodeString> text(NewUnicodeString(MakeText("a")));
    constant.Assign(&value);
    constant.SetType(Long);
    constant.Clear();
    constant.SetEmpty();
    constant.SetDouble(1.5);
    constant.SetString(text.Get());
    constant.SetString(Regex, text.Get());
    constant.SetLong(7);
    constant.SetLong(Hex, 7);
    constant.SetBool(!row.value.GetBool());
    constant.SortList();
    constant.SetSorted(true);
    constant.AddToList(std::int64_t{1});
    constant.AddToList(1.5);
    constant.AddToList(text.Get());
    constant.AddToList(true);
    constant.AddToList(&value);
    constant.SetListElem(0, std::int64_t{1});
    constant.SetListElem(0, 1.5);
    constant.SetListElem(0, true);
    constant.SetListElem(0, text.Get());
    constant.SetListElem(0, &value);
    constant.Erase(0);
    constant.Reserve(10);
    constant.SetMapValue(text.Get(), &value);
    EXPECT_FALSE(constant.ReverseList());
    EXPECT_FALSE(constant.JoinLists(&value));
    EXPECT_FALSE(constant.EraseFromList(&value));
    EXPECT_FALSE(constant.SetListFromArray(LongList, nullptr, 0));
    EXPECT_FALSE(constant.EraseMapValue(text.Get()));
    EXPECT_THAT(reports.Take(), IsEmpty());

    EXPECT_EQ(constant.GetType(), row.value.GetType());
    EXPECT_EQ(TakeUtf8(constant.ToString(nullptr)), Utf8(row.value.ToText(nullptr)));
    EXPECT_FALSE(constant.IsSorted());
  }
}

TEST(ConstVariants, OutliveAnyNumberOfReleases) {
  for (const ConstantRow& row : Constants()) {
    SCOPED_TRACE(row.name);
    for (int i = 0; i < 1000; ++i) EXPECT_FALSE(row.constant->Release());
    EXPECT_EQ(row.constant->AddRef(), row.constant->GetUseCount());
    EXPECT_EQ(row.constant->GetType(), row.value.GetType());
  }
}

TEST(ConstVariants, CompareAsTheirValues) {
  Reports reports;
  for (const ConstantRow& row : Constants()) {
    for (const VariantType type : AllTypes()) {
      SCOPED_TRACE(std::string(row.name) + " and " + NameOf(type));
      const CVariant other = SampleOf(type);
      reports.Take();
      const bool isEqual = row.value.IsEqual(&other);
      const std::size_t equalityReports = reports.Take().size();
      EXPECT_EQ(row.constant->IsEqual(&other), isEqual);
      EXPECT_EQ(reports.Take().size(), equalityReports);
      EXPECT_EQ(row.constant->Compare(&other), row.value.Compare(&other));
      EXPECT_EQ(row.constant->CanHoldValueOf(&other), row.value.CanHoldValueOf(&other));
      EXPECT_EQ(other.CanHoldValueOf(row.constant), other.CanHoldValueOf(&row.value));
    }
    if (row.value.GetType() == Empty) continue;
    EXPECT_TRUE(row.constant->IsEqual(row.constant));
    EXPECT_TRUE(row.constant->IsEqual(&row.value));
    EXPECT_TRUE(row.value.IsEqual(row.constant));
    EXPECT_EQ(row.constant->Compare(row.constant), 0);
    CVariant copy;
    copy.Assign(row.constant);
    EXPECT_TRUE(copy.IsEqual(&row.value));
  }
}

TEST(ConstVariants, ReportUnderTheBooleansOwnName) {
  Reports reports;
  const IVariant& constant = *MakeConstBool(true);
  for (const VariantType type : AllTypes()) {
    if (type == Boolean) continue;
    SCOPED_TRACE(NameOf(type));
    const CVariant other = SampleOf(type);
    EXPECT_FALSE(constant.IsEqual(&other));
    EXPECT_EQ(reports.Host().fPrinted.back().className, "CStaticConstBoolVariant");
    EXPECT_EQ(reports.Host().fPrinted.back().function, "IFIsEqual");
    EXPECT_THAT(reports.Take(),
                ElementsAre(UnsupportedReport("CStaticConstBoolVariant: eq",
                                              "operator 'equals' of Variant", Boolean, type)));
  }
  EXPECT_FALSE(constant.IsEqual(nullptr));
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CStaticConstBoolVariant: eq': No initialized right hand side of "
                          "operator 'equals'.."));
}

TEST(ConstVariants, AreMadeOnceAndOtherLongsEachTime) {
  EXPECT_EQ(MakeConstBool(true), MakeConstBool(true));
  EXPECT_NE(MakeConstBool(true), MakeConstBool(false));
  EXPECT_EQ(MakeConstLong(0), MakeConstLong(0));
  EXPECT_EQ(MakeConstLong(-1), MakeConstLong(-1));
  EXPECT_EQ(MakeConstEmptyString(), MakeConstEmptyString());

  const CUsePtr<IVariant> seven(MakeConstLong(7)), again(MakeConstLong(7));
  EXPECT_NE(seven.Get(), again.Get());
  EXPECT_EQ(seven->GetImplementationId(), CVariant::kImplementationId);
  EXPECT_EQ(seven->GetUseCount(), 1u);
  EXPECT_EQ(seven->GetLong(), 7);
}

TEST(ConstVariants, TakeNoMemory) {
  const long before = AllocationCount();
  CUsePtr<IVariant> target;
  MakeConstBool(true, target);
  MakeConstBool(false, target);
  MakeConstLong(0, target);
  MakeConstLong(-1, target);
  MakeConstEmptyString(target);
  EXPECT_TRUE(MakeConstBool(true)->GetBool());
  EXPECT_TRUE(MakeConstLong(0)->IsEqual(MakeConstLong(0)));
  EXPECT_EQ(AllocationCount(), before);
}

TEST(ConstVariants, ReplaceWhatACountedReferenceHeld) {
  const auto held = MakeUseCounted<CVariant>(std::int64_t{5});
  CUsePtr<IVariant> target(ShareUse<IVariant>(held.Get()));
  EXPECT_EQ(held->GetUseCount(), 2u);
  MakeConstBool(true, target);
  EXPECT_EQ(held->GetUseCount(), 1u);
  EXPECT_EQ(target.Get(), MakeConstBool(true));
  MakeConstLong(7, target);
  EXPECT_EQ(target->GetLong(), 7);
  EXPECT_EQ(target->GetUseCount(), 1u);
  MakeConstEmptyString(target);
  EXPECT_EQ(target.Get(), MakeConstEmptyString());
  MakeConstLong(-1, target);
  EXPECT_EQ(target.Get(), MakeConstLong(-1));
}

TEST(ConstVariants, AreSharedByThreads) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      for (int round = 0; round < 1000; ++round) {
        CUsePtr<IVariant> result;
        MakeConstBool(round % 2 == 0, result);
        EXPECT_EQ(result->GetBool(), round % 2 == 0);
        MakeConstLong(round % 2 - 1, result);
        EXPECT_EQ(result->GetLong(), round % 2 - 1);
        EXPECT_TRUE(result->IsEqual(MakeConstLong(round % 2 - 1)));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
