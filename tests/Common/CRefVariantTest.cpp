#include "Common/CRefVariant.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "Common/CRegex.h"
#include "Common/CVariant.h"
#include "tests/Common/VariantPairs.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;
using Selvane::IVariant;

using ViewPtr = CUsePtr<CRefVariant>;

ViewPtr ViewOf(const CVariant& list, std::int64_t index) {
  bool ok = false;
  return ViewPtr(list.GetMixedListElemRef(index, ok));
}

// A borrowed text that lives as long as the row that it stands in.
struct Argument {
  explicit Argument(std::string_view text) : fText(NewUnicodeString(MakeText(text))) {}
  operator Selvane::IUnicodeString*() const { return fText.Get(); }
  CUsePtr<Selvane::IUnicodeString> fText;
};

// The text form of a variant that the caller owns.
std::string Taken(IVariant* owned) {
  const CUsePtr<IVariant> held(owned);
  return owned ? TakeUtf8(owned->ToString(Argument(", "))) : "(null)";
}

template <class T>
std::string Shown(T value) {
  if constexpr (std::is_same_v<T, VariantType>) {
    return NameOf(value);
  } else {
    return std::to_string(value);
  }
}

std::string WithFlag(const std::function<std::string(bool&)>& read) {
  bool ok = false;
  std::string answer = read(ok);
  return answer + (ok ? " ok" : " none");
}

// One row an operation of the interface that a view forwards: does it, and tells what was answered.
struct ForwardedRow {
  const char* name;
  std::function<std::string(IVariant&)> ask;
};

// Changes answer nothing.
template <class Change>
ForwardedRow Changing(const char* name, Change change) {
  return {name, [change](IVariant& v) {
            change(v);
            return std::string();
          }};
}

template <class Ask>
ForwardedRow Asking(const char* name, Ask ask) {
  return {name, [ask](IVariant& v) { return Shown(ask(v)); }};
}

std::vector<ForwardedRow> ForwardedRows() {
  const CVariant one(std::int64_t{1});
  const CVariant text = TextValue(String, "one");
  const CVariant other = Texts({"two", "one"});
  const CVariant ranges = SampleOf(IPRangeList), range = SampleOf(IPRange);
  const CVariant pattern = TextValue(Regex, "t*");
  static const std::int64_t kData[] = {7, 8};
  return {
      Asking("GetType", [](IVariant& v) { return v.GetType(); }),
      Changing("SetType", [](IVariant& v) { v.SetType(Long); }),
      Changing("Clear", [](IVariant& v) { v.Clear(); }),
      Changing("SetEmpty", [](IVariant& v) { v.SetEmpty(); }),
      Changing("SetDouble", [](IVariant& v) { v.SetDouble(1.5); }),
      Asking("GetDouble", [](IVariant& v) { return v.GetDouble(); }),
      Asking("IsNumberType", [](IVariant& v) { return v.IsNumberType(); }),
      Changing("SetString", [](IVariant& v) { v.SetString(Argument("t")); }),
      Changing("SetString of a type", [](IVariant& v) { v.SetString(Regex, Argument("t")); }),
      {"GetString", [](IVariant& v) { return TakeUtf8(v.GetString()); }},
      Changing("SetLong", [](IVariant& v) { v.SetLong(5); }),
      Changing("SetLong of a type", [](IVariant& v) { v.SetLong(Hex, 5); }),
      Asking("GetLong", [](IVariant& v) { return v.GetLong(); }),
      Changing("SetBool", [](IVariant& v) { v.SetBool(true); }),
      Asking("GetBool", [](IVariant& v) { return v.GetBool(); }),
      {"GetIP",
       [](IVariant& v) {
         std::uint64_t high = 0, low = 0;
         bool isIPv6 = false;
         const bool ok = v.GetIP(&high, &low, &isIPv6);
         return Shown(ok) + Shown(high) + Shown(low) + Shown(isIPv6);
       }},
      {"GetIPRange",
       [](IVariant& v) {
         std::uint64_t w[4] = {};
         bool isIPv6 = false;
         const bool ok = v.GetIPRange(&w[0], &w[1], &w[2], &w[3], &isIPv6);
         return Shown(ok) + Shown(w[0]) + Shown(w[1]) + Shown(w[2]) + Shown(w[3]);
       }},
      {"GetIPListElem",
       [](IVariant& v) {
         std::uint64_t high = 0, low = 0;
         bool isIPv6 = false;
         const bool ok = v.GetIPListElem(1, &high, &low, &isIPv6);
         return Shown(ok) + Shown(high) + Shown(low) + Shown(isIPv6);
       }},
      {"GetIPRangeListElem",
       [](IVariant& v) {
         std::uint64_t w[4] = {};
         bool isIPv6 = false;
         const bool ok = v.GetIPRangeListElem(0, &w[0], &w[1], &w[2], &w[3], &isIPv6);
         return Shown(ok) + Shown(w[0]) + Shown(w[1]) + Shown(w[2]) + Shown(w[3]);
       }},
      Asking("IsEqual", [text](IVariant& v) { return v.IsEqual(&text); }),
      Asking("IsInRangeList", [ranges](IVariant& v) { return v.IsInRangeList(&ranges); }),
      Asking("IsInRange", [range](IVariant& v) { return v.IsInRange(&range); }),
      Asking("Compare", [one](IVariant& v) { return v.Compare(&one); }),
      {"Contains",
       [text](IVariant& v) {
         CVariant out;
         const std::string answer = Shown(v.Contains(&text, &out));
         return answer + Utf8(out.ToText(nullptr));
       }},
      {"FindFirstMatching",
       [pattern](IVariant& v) {
         const CRegexPtr compiled = CRegex::Create("t*", true);
         IVariant* result = nullptr;
         const bool found = v.FindFirstMatching(&pattern, &result, compiled.Get());
         return Shown(found) + Taken(result);
       }},
      {"ContainsAll",
       [other](IVariant& v) {
         CVariant out;
         const std::string answer = Shown(v.ContainsAll(&other, &out));
         return answer + Utf8(out.ToText(nullptr));
       }},
      {"ContainsAtLeastOne",
       [other](IVariant& v) {
         CVariant out;
         const std::string answer = Shown(v.ContainsAtLeastOne(&other, &out));
         return answer + Utf8(out.ToText(nullptr));
       }},
      Asking("IsListType", [](IVariant& v) { return v.IsListType(); }),
      Changing("SortList", [](IVariant& v) { v.SortList(); }),
      Asking("GetListSize", [](IVariant& v) { return v.GetListSize(); }),
      Changing("SetSorted", [](IVariant& v) { v.SetSorted(true); }),
      Asking("IsSorted", [](IVariant& v) { return v.IsSorted(); }),
      Changing("AddToList of a long", [](IVariant& v) { v.AddToList(std::int64_t{4}); }),
      Changing("AddToList of a double", [](IVariant& v) { v.AddToList(4.5); }),
      Changing("AddToList of a text", [](IVariant& v) { v.AddToList(Argument("t")); }),
      Changing("AddToList of a truth", [](IVariant& v) { v.AddToList(true); }),
      Changing("AddToList of a variant", [one](IVariant& v) { v.AddToList(&one); }),
      {"GetLongListElem",
       [](IVariant& v) {
         return WithFlag([&](bool& ok) { return Shown(v.GetLongListElem(1, ok)); });
       }},
      {"GetDoubleListElem",
       [](IVariant& v) {
         return WithFlag([&](bool& ok) { return Shown(v.GetDoubleListElem(1, ok)); });
       }},
      {"GetBoolListElem",
       [](IVariant& v) {
         return WithFlag([&](bool& ok) { return Shown(v.GetBoolListElem(0, ok)); });
       }},
      {"GetMixedListElem",
       [](IVariant& v) {
         return WithFlag([&](bool& ok) { return Taken(v.GetMixedListElem(1, ok)); });
       }},
      {"GetMixedListElemRef",
       [](IVariant& v) {
         return WithFlag([&](bool& ok) { return Taken(v.GetMixedListElemRef(1, ok)); });
       }},
      Asking("GetHash", [](IVariant& v) { return v.GetHash(); }),
      {"GetNumberListElem",
       [](IVariant& v) {
         return WithFlag([&](bool& ok) { return Taken(v.GetNumberListElem(1, ok)); });
       }},
      {"GetStringListElem",
       [](IVariant& v) {
         return WithFlag([&](bool& ok) { return TakeUtf8(v.GetStringListElem(1, ok)); });
       }},
      Asking("CanHoldValueOf", [text](IVariant& v) { return v.CanHoldValueOf(&text); }),
      Changing("SetListElem to a long", [](IVariant& v) { v.SetListElem(0, std::int64_t{4}); }),
      Changing("SetListElem to a double", [](IVariant& v) { v.SetListElem(0, 4.5); }),
      Changing("SetListElem to a truth", [](IVariant& v) { v.SetListElem(0, false); }),
      Changing("SetListElem to a text", [](IVariant& v) { v.SetListElem(0, Argument("t")); }),
      Changing("SetListElem to a variant", [one](IVariant& v) { v.SetListElem(0, &one); }),
      Asking("Find of a long", [](IVariant& v) { return v.Find(std::int64_t{6}); }),
      Asking("Find of a double", [](IVariant& v) { return v.Find(2.5); }),
      Asking("Find of a truth", [](IVariant& v) { return v.Find(false); }),
      Asking("Find of a text", [](IVariant& v) { return v.Find(Argument("two")); }),
      Asking("Find of a variant", [text](IVariant& v) { return v.Find(&text); }),
      Changing("Erase", [](IVariant& v) { v.Erase(0); }),
      {"ToString", [](IVariant& v) { return TakeUtf8(v.ToString(Argument("-"))); }},
      Changing("Reserve", [](IVariant& v) { v.Reserve(100); }),
      Asking("JoinLists", [other](IVariant& v) { return v.JoinLists(&other); }),
      Asking("EraseFromList", [other](IVariant& v) { return v.EraseFromList(&other); }),
      Asking("SetListFromArray",
             [](IVariant& v) { return v.SetListFromArray(LongList, kData, sizeof kData); }),
      Asking("FindExpression", [](IVariant& v) { return v.FindExpression(Argument("*o")); }),
      Changing("SetMapValue", [one](IVariant& v) { v.SetMapValue(Argument("k"), &one); }),
      {"GetMapValue", [](IVariant& v) { return Taken(v.GetMapValue(Argument("a"))); }},
      Asking("EraseMapValue", [](IVariant& v) { return v.EraseMapValue(Argument("a")); }),
      Asking("GetMapSize", [](IVariant& v) { return v.GetMapSize(); }),
      {"GetMapKeys", [](IVariant& v) { return Taken(v.GetMapKeys()); }},
      {"Matches",
       [](IVariant& v) {
         const Argument out("before");
         const std::string answer = Shown(v.Matches(Argument("text"), out));
         return answer + out.fText->GetUtf8();
       }},
      Asking("Find of a text from a start", [](IVariant& v) { return v.Find(Argument("two"), 2); }),
  };
}

// 77 operations; three count uses, and four a view answers itself.
TEST(CRefVariant, ForwardsAllOperationsButSeven) {
  Reports reports;
  const std::vector<ForwardedRow> rows = ForwardedRows();
  EXPECT_EQ(rows.size(), 70u);
  for (const VariantType type : AllTypes()) {
    for (const ForwardedRow& row : rows) {
      SCOPED_TRACE(NameOf(type) + "." + row.name);
      const CVariant list = Variants({CVariant(), SampleOf(type)});
      CVariant direct = SampleOf(type);
      reports.Take();
      const std::string expected = row.ask(direct);
      const std::vector<std::string> expectedReports = reports.Take();

      EXPECT_EQ(row.ask(*ViewOf(list, 1)), expected);
      EXPECT_EQ(reports.Take(), expectedReports);
      // What the view was told is in the list.
      CVariant element;
      ASSERT_TRUE(list.ReadElement(1, element));
      EXPECT_EQ(element.GetType(), direct.GetType());
      EXPECT_EQ(element.IsSorted(), direct.IsSorted());
      EXPECT_EQ(Utf8(element.ToText(MakeText(", "))), Utf8(direct.ToText(MakeText(", "))));
    }
  }
}

TEST(CRefVariant, ChangesTheListsElement) {
  CVariant list = Variants({CVariant(std::int64_t{1}), TextValue(String, "x")});
  const ViewPtr view = ViewOf(list, 1);
  view->SetLong(9);
  const CVariant expected = Variants({CVariant(std::int64_t{1}), CVariant(std::int64_t{9})});
  EXPECT_TRUE(list.IsEqual(&expected));
}

TEST(CRefVariant, AnswersSomeThingsItself) {
  Reports reports;
  const CVariant list = Variants({Longs({1, 2}), CVariant(true)});
  const ViewPtr view = ViewOf(list, 0);
  const CVariant other(std::int64_t{5});
  view->Assign(&other);
  EXPECT_EQ(view->GetType(), LongList);
  EXPECT_EQ(view->Clone(), nullptr);
  EXPECT_FALSE(view->ReverseList());
  EXPECT_EQ(TakeUtf8(view->ToString(Argument(","))), "1,2");
  EXPECT_EQ(view->GetImplementationId(), 2u);
  EXPECT_EQ(list.GetImplementationId(), 3u);
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CRefVariant, CountsItsOwnUses) {
  const CVariant list = Variants({CVariant(true)});
  ViewPtr view = ViewOf(list, 0);
  EXPECT_EQ(view->GetUseCount(), 1u);
  EXPECT_EQ(view->AddRef(), 2u);
  EXPECT_FALSE(view->Release());
  EXPECT_TRUE(view.Detach()->Release());
  bool ok = false;
  EXPECT_EQ(Taken(list.GetMixedListElem(0, ok)), "true");
}

TEST(CRefVariant, IsGivenForMixedListsAndTheirPositionsAlone) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    const CVariant list = SampleOf(type);
    for (const std::int64_t index :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{2}, std::int64_t{-1},
          std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
      SCOPED_TRACE(NameOf(type) + " at " + std::to_string(index));
      const bool exists = type == MixedList && (index == 0 || index == 1);
      bool ok = !exists;
      const ViewPtr view(list.GetMixedListElemRef(index, ok));
      EXPECT_EQ(ok, exists);
      EXPECT_EQ(view.Get() != nullptr, exists);
    }
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CRefVariant, IsAForeignVariantToOthers) {
  // Two views meet, which neither recognises as a peer.
  Reports reports;
  for (const VariantType type : AllTypes()) {
    if (type == Empty) continue;
    SCOPED_TRACE(NameOf(type));
    const CVariant list = Variants({SampleOf(type), SampleOf(type)});
    const ViewPtr left = ViewOf(list, 0), right = ViewOf(list, 1);
    EXPECT_TRUE(left->IsEqual(right.Get()));
    CVariant copy;
    copy.Assign(left.Get());
    EXPECT_TRUE(right->IsEqual(&copy));
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

}  // namespace
