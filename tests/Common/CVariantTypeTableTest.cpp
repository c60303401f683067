#include "Common/CVariantTypeTable.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/Common/VariantSupport.h"

namespace {

constexpr std::uint32_t kVariantBytes = sizeof(CVariant);

struct TypeRow {
  int id;
  const char* name;
  std::uint32_t size;
  bool owns, isList;
  int base;
};

// Stored data depend on every number here.
constexpr TypeRow kTypeRows[] = {
    {0, "Empty", 0, false, false, 0},
    {1, "Double", 8, false, false, 0},
    {2, "Long", 8, false, false, 0},
    {3, "String", 8, true, false, 0},
    {4, "Boolean", 1, false, false, 0},
    {5, "LongList", 8, false, true, 2},
    {6, "DoubleList", 8, false, true, 1},
    {7, "StringList", 8, true, true, 3},
    {8, "BooleanList", 1, false, true, 4},
    {9, "MixedList", kVariantBytes, true, true, 0},
    {10, "NumberList", 16, false, true, 0},
    {11, "Dimension", 8, false, true, 2},
    {12, "DimensionList", kVariantBytes, true, true, 11},
    {13, "IP", 24, false, false, 0},
    {14, "IPList", 24, false, true, 13},
    {15, "IPRange", 24, false, true, 13},
    {16, "IPRangeList", kVariantBytes, true, true, 15},
    {17, "Category", 8, false, false, 2},
    {18, "Regex", 8, true, false, 3},
    {19, "Hex", 8, false, false, 2},
    {20, "CategoryList", 8, false, true, 17},
    {21, "RegexList", 8, true, true, 18},
    {22, "HexList", 8, false, true, 19},
    {23, "MediaType", 8, true, false, 3},
    {24, "MediaTypeList", 8, true, true, 23},
    {25, "HostAndCertificate", 24, true, false, 0},
    {26, "HostAndCertificateList", 24, true, true, 25},
    {27, "DLPCategory", 8, false, false, 2},
    {28, "DLPCategoryList", 8, false, true, 27},
    {29, "Map", 16, true, false, 0},
    {30, "SSOConnector", 8, true, false, 3},
    {31, "SSOConnectorList", 8, true, true, 30},
};
static_assert(std::size(kTypeRows) == kVariantTypeCount);

TEST(CVariantTypeTable, HasTheseRows) {
  for (const TypeRow& row : kTypeRows) {
    SCOPED_TRACE(row.name);
    const CVariantTypeInfo& info = kVariantTypeTable[static_cast<std::size_t>(row.id)];
    EXPECT_EQ(static_cast<int>(info.fType), row.id);
    EXPECT_STREQ(info.fName, row.name);
    EXPECT_EQ(info.fElementSize, row.size);
    EXPECT_EQ(info.fOwnsObjects, row.owns);
    EXPECT_EQ(info.fIsList, row.isList);
    EXPECT_EQ(static_cast<int>(info.fBaseType), row.base);
  }
}

TEST(CVariantTypeTable, FindsATypeByItsName) {
  for (const TypeRow& row : kTypeRows) {
    EXPECT_EQ(static_cast<int>(TypeByName(row.name)), row.id) << row.name;
  }
  EXPECT_EQ(TypeByName("Number"), VariantType::Long);
  for (const char* unknown : {"", "number", "LONG", "Long ", "List"}) {
    EXPECT_EQ(TypeByName(unknown), VariantType::Empty) << unknown;
  }
}

TEST(CVariantTypeTable, HasTheseFamilies) {
  struct Row {
    const char* name;
    VariantTypeSet family;
    std::set<int> ids;
  };
  const Row rows[] = {
      {"numbers", TypeFamily::Numbers, {1, 2, 17, 19, 27}},
      {"integer scalars", TypeFamily::IntegerScalars, {2, 17, 19, 27}},
      {"string scalars", TypeFamily::StringScalars, {3, 18, 23, 30}},
      {"string lists", TypeFamily::StringLists, {7, 21, 24, 31}},
      {"integer lists", TypeFamily::IntegerLists, {5, 20, 22, 28}},
      {"lists of variants", TypeFamily::VariantLists, {9, 12, 16}},
  };
  for (const Row& row : rows) {
    for (int id = 0; id < 256; ++id) {
      EXPECT_EQ(row.family.Has(static_cast<VariantType>(id)), row.ids.contains(id))
          << row.name << " " << id;
    }
  }
  for (const VariantType type : AllTypes()) {
    EXPECT_EQ(SampleOf(type).IsNumberType(), TypeFamily::Numbers.Has(type));
    EXPECT_EQ(SampleOf(type).IsListType(), TypeInfo(type).fIsList);
  }
}

// ---- the interface's slots

constexpr std::size_t kSlots = 77;
std::vector<std::size_t> gCalled;

template <std::size_t Slot>
std::uintptr_t NoteSlot() {
  gCalled.push_back(Slot);
  return 0;
}

using SlotFunction = std::uintptr_t (*)();

template <std::size_t... Slot>
constexpr std::array<SlotFunction, sizeof...(Slot)> MakeTable(std::index_sequence<Slot...>) {
  return {&NoteSlot<Slot>...};
}

constinit const std::array<SlotFunction, kSlots> kTable =
    MakeTable(std::make_index_sequence<kSlots>());

struct FakeObject {
  const SlotFunction* table = kTable.data();
};

// The object has a table and no type, which is all that a call by position needs.
__attribute__((no_sanitize("vptr"))) void CallInOrder(Selvane::IVariant& variant) {
  using Text = Selvane::IUnicodeString;
  Text* const text = nullptr;
  const Selvane::IVariant* const other = nullptr;
  std::uint64_t word = 0;
  bool flag = false;
  const std::int64_t number = 0;
  const VariantType type = VariantType::Long;

  variant.AddRef();
  variant.Release();
  variant.GetUseCount();
  variant.Assign(other);
  variant.Clone();
  variant.GetType();
  variant.SetType(type);
  variant.Clear();
  variant.SetEmpty();
  variant.SetDouble(0.0);
  variant.GetDouble();
  variant.IsNumberType();
  variant.SetString(text);
  variant.SetString(type, text);
  variant.GetString();
  variant.SetLong(number);
  variant.SetLong(type, number);
  variant.GetLong();
  variant.SetBool(false);
  variant.GetBool();
  variant.GetIP(&word, &word, &flag);
  variant.GetIPRange(&word, &word, &word, &word, &flag);
  variant.GetIPListElem(number, &word, &word, &flag);
  variant.GetIPRangeListElem(number, &word, &word, &word, &word, &flag);
  variant.IsEqual(other);
  variant.IsInRangeList(other);
  variant.IsInRange(other);
  variant.Compare(other);
  variant.Contains(other, nullptr);
  variant.FindFirstMatching(other, nullptr, nullptr);
  variant.ContainsAll(other, nullptr);
  variant.ContainsAtLeastOne(other, nullptr);
  variant.IsListType();
  variant.SortList();
  variant.GetListSize();
  variant.SetSorted(false);
  variant.IsSorted();
  variant.AddToList(number);
  variant.AddToList(0.0);
  variant.AddToList(text);
  variant.AddToList(false);
  variant.AddToList(other);
  variant.GetLongListElem(number, flag);
  variant.GetDoubleListElem(number, flag);
  variant.GetBoolListElem(number, flag);
  variant.GetMixedListElem(number, flag);
  variant.GetMixedListElemRef(number, flag);
  variant.GetImplementationId();
  variant.GetHash();
  variant.GetNumberListElem(number, flag);
  variant.GetStringListElem(number, flag);
  variant.CanHoldValueOf(other);
  variant.SetListElem(number, number);
  variant.SetListElem(number, 0.0);
  variant.SetListElem(number, false);
  variant.SetListElem(number, text);
  variant.SetListElem(number, other);
  variant.Find(number);
  variant.Find(0.0);
  variant.Find(false);
  variant.Find(text);
  variant.Find(other);
  variant.Erase(number);
  variant.ToString(text);
  variant.ReverseList();
  variant.Reserve(0);
  variant.JoinLists(other);
  variant.EraseFromList(other);
  variant.SetListFromArray(type, nullptr, 0);
  variant.FindExpression(text);
  variant.SetMapValue(text, other);
  variant.GetMapValue(text);
  variant.EraseMapValue(text);
  variant.GetMapSize();
  variant.GetMapKeys();
  variant.Matches(text, nullptr);
  variant.Find(text, number);
}

TEST(SelvaneIVariant, HasItsOperationsInTheirOrder) {
  FakeObject fake;
  void* volatile hidden = &fake;  // the compiler must not know what it calls
  gCalled.clear();
  CallInOrder(*static_cast<Selvane::IVariant*>(hidden));

  std::vector<std::size_t> inOrder(kSlots);
  for (std::size_t i = 0; i < kSlots; ++i) inOrder[i] = i;
  EXPECT_EQ(gCalled, inOrder);
}

}  // namespace
