#include "module/types/Tessarin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/IJSON.h"

using namespace Tovrin;

namespace {

AutoRefPtr<Tessarin> Make(std::string expression, TypeId type = 21) {
  AutoRefPtr<Tessarin> object(new Tessarin(type));
  object->SetExpression(std::move(expression));
  return object;
}

const Tessarin& AsTessarin(const AutoRefPtr<IUserDefinedType>& object) {
  return dynamic_cast<const Tessarin&>(*object.get());
}

// A user-defined value of another class.
class OtherType final : public InterfaceImpl<IUserDefinedType> {
  const char* Interface_GetName() const override { return "Other"; }
  IUserDefinedType* Interface_Clone() const override { return nullptr; }
  TypeId Interface_GetType() const override { return 25; }
  bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }
};

TEST(Tessarin, IsEmptyWhenNew) {
  for (const TypeId type : {TypeId{0}, TypeId{21}, TypeId{4000000001}}) {
    const AutoRefPtr<Tessarin> object(new Tessarin(type));
    EXPECT_STREQ(object->GetName(), "Tessarin");
    EXPECT_EQ(object->GetType(), type);
    EXPECT_EQ(object->GetCount(), 1);
    EXPECT_EQ(object->Expression(), "");
    EXPECT_FALSE(object->HasRegex());
    EXPECT_FALSE(object->Matches(""));
    EXPECT_FALSE(object->Search(""));
    EXPECT_EQ(object->Replace("a", "b", true), "");
    EXPECT_EQ(object->Replace("a", "b", false), "");
  }
}

TEST(Tessarin, MovesItsExpressionInAndCompilesIt) {
  const AutoRefPtr<Tessarin> object(new Tessarin(21));
  std::string text = "a long expression that no small buffer holds, or it would not be moved";
  const std::string copy = text;
  EXPECT_TRUE(object->SetExpression(std::move(text)));
  EXPECT_EQ(text, "");
  EXPECT_EQ(object->Expression(), copy);
  EXPECT_TRUE(object->Matches(copy));
}

TEST(Tessarin, KeepsTheTextOfAnExpressionThatDoesNotCompile) {
  const auto object = Make("abc");
  EXPECT_FALSE(object->SetExpression("("));
  EXPECT_EQ(object->Expression(), "(");
  EXPECT_FALSE(object->HasRegex());
  EXPECT_FALSE(object->Matches("abc"));
  EXPECT_TRUE(object->SetExpression("x"));
  EXPECT_TRUE(object->Matches("X"));
}

TEST(Tessarin, CanBeSetToItsOwnText) {
  const auto object = Make("abc");
  std::string& own = const_cast<std::string&>(object->Expression());
  EXPECT_TRUE(object->SetExpression(std::move(own)));
  EXPECT_EQ(object->Expression(), "abc");
  EXPECT_TRUE(object->Matches("abc"));
}

TEST(Tessarin, ReplacesNothingWithoutACompiledExpression) {
  const auto object = Make("(");
  EXPECT_EQ(object->Replace("a(b", "x", true), "");
  EXPECT_EQ(object->Replace("a(b", "x", false), "");
}

TEST(Tessarin, ClonesShareNothing) {
  struct Row {
    const char* expression;
    const char* text;
    bool matches;
  };
  for (const Row& row : {Row{"ab+c", "ABBC", true}, Row{"(?i)abc", "ABC", true},
                         Row{"(", "(", false}, Row{"", "", true}}) {
    SCOPED_TRACE(row.expression);
    auto source = Make(row.expression, 33);
    const auto clone = source->Clone();
    ASSERT_TRUE(clone);
    EXPECT_EQ(clone->GetCount(), 1);
    EXPECT_EQ(clone->GetType(), 33u);
    EXPECT_EQ(AsTessarin(clone).Expression(), row.expression);
    EXPECT_EQ(AsTessarin(clone).HasRegex(), source->HasRegex());
    if (source->HasRegex()) {
      EXPECT_NE(AsTessarin(clone).Regex().Get(), source->Regex().Get());
    }
    EXPECT_TRUE(clone->IsEqual(source.get()));

    source.reset();
    EXPECT_EQ(AsTessarin(clone).Matches(row.text), row.matches);
  }
}

TEST(Tessarin, ClonesOfANewObjectHaveNothingCompiled) {
  const AutoRefPtr<Tessarin> object(new Tessarin(21));
  const auto clone = object->Clone();
  EXPECT_FALSE(AsTessarin(clone).HasRegex());
  EXPECT_EQ(AsTessarin(clone).Expression(), "");
}

// The texts in their order, which is that of unsigned bytes, a prefix before the longer.
TEST(Tessarin, IsOrderedByTheBytesOfItsText) {
  using namespace std::string_view_literals;
  constexpr std::string_view kInOrder[] = {"",  "\0"sv, "\0a"sv, "(",        "(a",
                                           "A", "a",    "a\0"sv, "a\0a"sv,   "aa",
                                           "b", "\x7f", "\x80",  "\xc3\xa9", "\xff"};
  for (std::size_t left = 0; left < std::size(kInOrder); ++left) {
    for (std::size_t right = 0; right < std::size(kInOrder); ++right) {
      const auto first = Make(std::string(kInOrder[left]));
      const auto second = Make(std::string(kInOrder[right]));
      EXPECT_EQ(first->LessThan(second.get()), left < right) << left << " and " << right;
      EXPECT_EQ(first->IsEqual(second.get()), left == right) << left << " and " << right;
    }
  }
}

// Contract: neither is less than the other, so values of two classes are equal.
TEST(Tessarin, IsLessThanNoOtherClassAndEqualToIt) {
  const auto object = Make("a");
  const AutoRefPtr<OtherType> other(new OtherType);
  EXPECT_FALSE(object->LessThan(other.get()));
  EXPECT_FALSE(other->LessThan(object.get()));
  EXPECT_TRUE(object->IsEqual(other.get()));
  EXPECT_FALSE(object->LessThan(nullptr));
  EXPECT_FALSE(object->IsEqual(nullptr));
}

TEST(Tessarin, HasNoBinaryForm) {
  const auto object = Make("a");
  EXPECT_FALSE(object->FromBinaryData("b", 1, 0));
  EXPECT_EQ(object->Expression(), "a");
  void* out = nullptr;
  EXPECT_EQ(object->ToBinaryData(&out, 0), 0u);
  EXPECT_EQ(out, nullptr);
}

TEST(Tessarin, GivesItsReferencesBack) {
  const auto object = Make("a");
  EXPECT_EQ(object->Regex()->UseCount(), 1u);
  const CRegexPtr held = object->Regex();
  EXPECT_EQ(held->UseCount(), 2u);
  object->SetExpression("b");
  EXPECT_EQ(held->UseCount(), 1u) << "the object dropped what it had";
}

// Read-only use from many threads at once; what this is for is the thread sanitizer.
TEST(Tessarin, AnswersEightThreadsAtOnce) {
  const auto object = Make("(a+)(b)?");
  const auto peer = Make("x");
  std::vector<std::thread> threads;
  std::vector<int> failures(8);
  for (int& failed : failures) {
    threads.emplace_back([&object, &peer, &failed] {
      for (int round = 0; round < 200; ++round) {
        const AutoRefPtr<Tessarin> held = Share(object.get());
        failed += !held->Matches("AAB");
        failed += held->Matches("c");
        failed += !held->Search("xxaxx");
        failed += held->Replace("-ab-", "[\\2\\1]", true) != "-[ba]-";
        failed += !held->LessThan(peer.get());
        failed += AsTessarin(held->Clone()).Expression() != "(a+)(b)?";
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, std::vector<int>(8));
  EXPECT_EQ(object->GetCount(), 1);
}

}  // namespace
