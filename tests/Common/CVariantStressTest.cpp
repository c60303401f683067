// Random operations on a few variants that are each other's arguments: as they are, through views
// of elements, as other implementations, and as values of maps. Under the sanitizers this shows
// what outlives what it points at.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"

namespace {

using enum VariantType;
using Selvane::IVariant;

class CStage {
public:
  explicit CStage(unsigned seed) : fRandom(seed) {
    for (int i = 0; i < 6; ++i) fVariants.push_back(MakeUseCounted<CVariant>(SampleOf(AnyType())));
  }

  std::int64_t Any(unsigned count) { return fRandom() % count; }
  VariantType AnyType() { return static_cast<VariantType>(Any(kVariantTypeCount)); }
  std::int64_t AnyPosition() { return Any(5) - 1; }
  CVariant& AnyVariant() { return *fVariants[static_cast<std::size_t>(Any(6))]; }
  CUsePtr<CRefVariant> AnyView(const CVariant& list) {
    bool ok = false;
    return CUsePtr<CRefVariant>(list.GetMixedListElemRef(AnyPosition(), ok));
  }

  // Something for an operation of self to take.
  CUsePtr<IVariant> AnyArgument(CVariant& self) {
    CVariant& other = AnyVariant();
    switch (Any(6)) {
      case 0:
        return CUsePtr<IVariant>(new ForeignVariant(other));
      case 1:
        if (auto view = AnyView(self)) return CUsePtr<IVariant>(view.Detach());
        return ShareUse<IVariant>(&self);
      case 2:
        if (auto view = AnyView(other)) return CUsePtr<IVariant>(view.Detach());
        return ShareUse<IVariant>(&other);
      case 3:
        if (auto value = other.FindMapValue(MakeText("a"))) return ShareUse<IVariant>(value.Get());
        return CUsePtr<IVariant>(new CVariant(SampleOf(AnyType())));
      default:
        return ShareUse<IVariant>(&other);
    }
  }

private:
  std::mt19937 fRandom;
  std::vector<CUsePtr<CVariant>> fVariants;
};

using Act = std::function<void(CStage&, CVariant&, IVariant& argument)>;

const std::vector<Act>& Acts() {
  static const CUsePtr<CUnicodeString> key = MakeUseCounted<CUnicodeString>("a");
  static const std::vector<Act> kActs = {
      [](CStage&, CVariant& v, IVariant& a) { v.Assign(&a); },
      [](CStage&, CVariant& v, IVariant& a) { v.AddToList(&a); },
      [](CStage& s, CVariant& v, IVariant& a) { v.SetListElem(s.AnyPosition(), &a); },
      [](CStage&, CVariant& v, IVariant& a) { v.JoinLists(&a); },
      [](CStage&, CVariant& v, IVariant& a) { v.EraseFromList(&a); },
      [](CStage&, CVariant& v, IVariant& a) { v.Contains(&a, &v); },
      [](CStage& s, CVariant& v, IVariant& a) { v.ContainsAll(&a, &s.AnyVariant()); },
      [](CStage&, CVariant& v, IVariant& a) { v.ContainsAtLeastOne(&a, &a); },
      [](CStage&, CVariant& v, IVariant& a) { v.SetMapValue(key.Get(), &a); },
      [](CStage&, CVariant& v, IVariant&) { v.EraseMapValue(key.Get()); },
      [](CStage&, CVariant& v, IVariant&) { v.SortList(); },
      [](CStage& s, CVariant& v, IVariant&) { v.SetSorted(s.Any(2) == 0); },
      [](CStage&, CVariant& v, IVariant&) { v.ReverseList(); },
      [](CStage& s, CVariant& v, IVariant&) { v.Erase(s.AnyPosition()); },
      [](CStage&, CVariant& v, IVariant&) { v.Clear(); },
      [](CStage& s, CVariant& v, IVariant&) { v = SampleOf(s.AnyType()); },
      [](CStage& s, CVariant& v, IVariant&) { v.AddToList(s.Any(5)); },
      [](CStage& s, CVariant& v, IVariant&) { v.AddToList(static_cast<double>(s.Any(5))); },
      [](CStage& s, CVariant& v, IVariant&) { v.AddToList(s.Any(2) == 0); },
      [](CStage& s, CVariant& v, IVariant&) {
        v.AddToList(MakeText(std::to_string(s.Any(5))).Get());
      },
      [](CStage&, CVariant& v, IVariant& a) { EXPECT_EQ(v.IsEqual(&a), v.IsEqual(&a)); },
      [](CStage&, CVariant& v, IVariant& a) { EXPECT_EQ(v.Compare(&a), v.Compare(&a)); },
      [](CStage&, CVariant& v, IVariant& a) { EXPECT_GE(v.Find(&a), -1); },
      [](CStage& s, CVariant& v, IVariant&) { v.SetLong(s.AnyType(), 3); },
      [](CStage& s, CVariant& v, IVariant&) { v.SetString(s.AnyType(), MakeText("::1").Get()); },
      [](CStage& s, CVariant& v, IVariant&) { v.Reserve(static_cast<std::uint64_t>(s.Any(50))); },
      [](CStage&, CVariant& v, IVariant&) { EXPECT_EQ(v.GetHash(), CVariant(v).GetHash()); },
      [](CStage&, CVariant& v, IVariant&) {
        for (int i = 0; i < 12; ++i) EXPECT_GE(v.FindFrom(0, MakeText("3").Get()), -1);
      },
      // through a view of an element
      [](CStage& s, CVariant& v, IVariant& a) {
        if (const auto view = s.AnyView(v)) view->AddToList(&a);
      },
      [](CStage& s, CVariant& v, IVariant& a) {
        if (const auto view = s.AnyView(v)) view->JoinLists(&a);
      },
      [](CStage& s, CVariant& v, IVariant& a) {
        if (const auto view = s.AnyView(v)) view->EraseFromList(&a);
      },
      [](CStage& s, CVariant& v, IVariant& a) {
        if (const auto view = s.AnyView(v)) view->SetMapValue(key.Get(), &a);
      },
      [](CStage& s, CVariant& v, IVariant&) {
        if (const auto view = s.AnyView(v)) view->SetEmpty();
      },
      // in a map's own value
      [](CStage&, CVariant& v, IVariant& a) {
        if (const auto value = v.FindMapValue(MakeText("a"))) value->Assign(&a);
      },
      [](CStage&, CVariant& v, IVariant& a) {
        if (const auto value = v.FindMapValue(MakeText("a"))) value->SetMapValue(key.Get(), &a);
      },
  };
  return kActs;
}

std::string TextForm(const CVariant& value) {
  std::string text;
  value.AppendText(";", text);
  return text;
}

TEST(CVariantStress, NothingThatIsDoneLeavesAValueThatIsNotWhole) {
  constexpr std::size_t kLongest = 2000;  // bytes of text; what is longer starts anew
  const InSlot<QuestionedHost> host{Gates{.active = false}};
  for (unsigned seed = 0; seed < 300; ++seed) {
    CStage stage(seed);
    for (int step = 0; step < 150; ++step) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
      CVariant& value = stage.AnyVariant();
      if (TextForm(value).size() > kLongest) value.SetEmpty();
      const auto argument = stage.AnyArgument(value);
      const auto act = static_cast<std::size_t>(stage.Any(static_cast<unsigned>(Acts().size())));
      Acts()[act](stage, value, *argument.Get());
      const CVariant copy(value);
      ASSERT_EQ(copy.GetType(), value.GetType());
      ASSERT_EQ(TextForm(copy), TextForm(value));
    }
    host.Get()->fQuestions.clear();
  }
}

}  // namespace
