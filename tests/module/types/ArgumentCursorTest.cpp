#include "module/types/ArgumentCursor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "host/Data.h"
#include "tests/support/HostValues.h"

using namespace Tovrin;

namespace {

struct NumberRow {
  const char* name;
  double number;
  std::int64_t asSigned;
  std::uint64_t asUnsigned;
};

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr std::uint64_t kBit63 = std::uint64_t{1} << 63;
constexpr std::uint64_t kWrapped = std::numeric_limits<std::uint64_t>::max();

constexpr NumberRow kNumberRows[] = {
    {"Zero", 0, 0, 0},
    {"MinusZero", -0.0, 0, 0},
    {"BelowOne", 0.9, 0, 0},
    {"AboveMinusOne", -0.9, 0, 0},
    {"MinusOne", -1, -1, kWrapped},
    {"MinusOneAndAHalf", -1.5, -1, kWrapped},
    {"TwoTo53", 9007199254740992.0, 9007199254740992, 9007199254740992u},
    {"JustBelowTwoTo63", 9223372036854774784.0, 9223372036854774784, 9223372036854774784u},
    {"TwoTo63", kTwoTo63, INT64_MIN, kBit63},
    {"AboveTwoTo63", kTwoTo63 + 4096, INT64_MIN, kBit63 + 4096},
    {"MinusTwoTo63", -kTwoTo63, INT64_MIN, kBit63},
    {"BelowMinusTwoTo63", -kTwoTo63 * 2, INT64_MIN, kBit63},
    // Contract: what no 64 bits hold wraps to 0, so it is the index of the first entry.
    {"TwoTo64", kTwoTo63 * 2, INT64_MIN, 0},
    {"FarAbove", 1e20, INT64_MIN, 0},
    {"Infinity", std::numeric_limits<double>::infinity(), INT64_MIN, 0},
    {"MinusInfinity", -std::numeric_limits<double>::infinity(), INT64_MIN, kBit63},
    {"NoNumber", std::numeric_limits<double>::quiet_NaN(), INT64_MIN, std::uint64_t{1} << 63},
};

TEST(ArgumentCursor, CutsNumbersToIntegers) {
  for (const NumberRow& row : kNumberRows) {
    const auto argument = TestVariant::Number(row.number);
    IVariant* const arguments[] = {argument.get(), argument.get()};
    ArgumentCursor cursor(2, arguments, nullptr, nullptr);
    EXPECT_EQ(cursor.ReadSigned(), row.asSigned) << row.name;
    EXPECT_EQ(cursor.ReadUnsigned(), row.asUnsigned) << row.name;
    EXPECT_FALSE(cursor.Failed()) << row.name;
  }
}

TEST(ArgumentCursor, CutsNumbersTheSameWayWhenTheCompilerFolds) {
  static_assert(TruncateToInt64(1e300) == INT64_MIN);
  static_assert(TruncateToInt64(-7.9) == -7);
  static_assert(TruncateToUInt64(1e20) == 0);
  static_assert(TruncateToUInt64(kTwoTo63) == kBit63);
}

TEST(ArgumentCursor, ReadsArgumentsInOrder) {
  const AutoRefPtr<IDataRef> data(new Data);
  const Tovrin::AutoRefPtr<TestVariant> values[] = {
      TestVariant::Boolean(true), TestVariant::Number(-3), TestVariant::Text("text"),
      TestVariant::Data(data), TestVariant::Vector(10, TestVector::Texts({"a"}))};
  std::vector<IVariant*> arguments;
  for (const auto& value : values) arguments.push_back(value.get());

  ArgumentCursor cursor(5, arguments.data(), nullptr, nullptr);
  EXPECT_TRUE(cursor.ReadBoolean());
  EXPECT_EQ(cursor.ReadSigned(), -3);
  EXPECT_EQ(cursor.ReadText(), "text");
  EXPECT_EQ(cursor.ReadData().get(), data.get());
  EXPECT_EQ(TextsOf(cursor.ReadVector()), std::vector<std::string>{"a"});
  EXPECT_FALSE(cursor.Failed());
  EXPECT_EQ(cursor.Status(), kSuccess);
}

TEST(ArgumentCursor, CountsATextOrEndsItAtItsFirstZeroByte) {
  const auto argument = TestVariant::Text(std::string_view("a\0b", 3));
  IVariant* const arguments[] = {argument.get(), argument.get()};
  ArgumentCursor cursor(2, arguments, nullptr, nullptr);
  EXPECT_EQ(cursor.ReadText(), std::string("a\0b", 3));
  EXPECT_STREQ(cursor.ReadZeroTerminatedText(), "a");
}

TEST(ArgumentCursor, TakesATextWithoutBytesForEmpty) {
  const AutoRefPtr<TestVariant> argument(new TestVariant(kTypeString));
  IVariant* const arguments[] = {argument.get(), argument.get()};
  ArgumentCursor cursor(2, arguments, nullptr, nullptr);
  EXPECT_EQ(cursor.ReadText(), "");
  EXPECT_STREQ(cursor.ReadZeroTerminatedText(), "");
  EXPECT_FALSE(cursor.Failed());
}

// Contract: a DATAREF without data is accepted, unlike a vector variant without a vector.
TEST(ArgumentCursor, TakesADataReferenceThatHoldsNothing) {
  const auto argument = TestVariant::Data({});
  IVariant* const arguments[] = {argument.get(), argument.get()};
  ArgumentCursor cursor(2, arguments, nullptr, nullptr);
  EXPECT_FALSE(cursor.ReadData());
  EXPECT_FALSE(cursor.Failed());
  EXPECT_FALSE(cursor.ReadVector());
  EXPECT_EQ(cursor.Status(), MakeStatus(2, kWrongArgument));
}

TEST(ArgumentCursor, KeepsItsFirstFailureAndReadsNoFurther) {
  const auto wrong = TestVariant::Boolean(true);
  const auto good = TestVariant::Text("text");
  IVariant* const arguments[] = {wrong.get(), good.get()};
  ArgumentCursor cursor(2, arguments, nullptr, nullptr);
  EXPECT_EQ(cursor.ReadText(), "");
  EXPECT_EQ(cursor.Status(), MakeStatus(1, kWrongArgument));

  EXPECT_EQ(cursor.ReadText(), "");
  EXPECT_FALSE(cursor.ReadBoolean());
  EXPECT_EQ(cursor.ReadSigned(), 0);
  EXPECT_EQ(cursor.ReadUnsigned(), 0u);
  EXPECT_STREQ(cursor.ReadZeroTerminatedText(), "");
  EXPECT_FALSE(cursor.ReadData());
  EXPECT_FALSE(cursor.ReadVector());
  EXPECT_FALSE(cursor.ReadTessarin());
  EXPECT_FALSE(cursor.ReadTessarinList());
  EXPECT_EQ(good->Reads(), 0u);
  EXPECT_EQ(cursor.Status(), MakeStatus(1, kWrongArgument));
}

TEST(ArgumentCursor, GivesAnObjectWithAReferenceOfItsOwn) {
  const AutoRefPtr<Tessarin> object(new Tessarin(21));
  const auto argument = TestVariant::Object(21, Share<IUserDefinedType>(object.get()));
  IVariant* const arguments[] = {argument.get(), argument.get()};
  ArgumentCursor cursor(2, arguments, nullptr, nullptr);
  {
    const auto read = cursor.ReadTessarin();
    EXPECT_EQ(read.get(), object.get());
    EXPECT_EQ(object->GetCount(), 3);
  }
  EXPECT_EQ(object->GetCount(), 2);

  EXPECT_FALSE(cursor.ReadTessarinList());
  EXPECT_EQ(cursor.Status(), MakeStatus(2, kWrongArgument)) << "an object of another class";
  EXPECT_EQ(object->GetCount(), 2);
}

// The type is asked for, not the object: a scalar that carries one is none.
TEST(ArgumentCursor, RefusesAnObjectInAVariantOfABuiltInType) {
  const AutoRefPtr<IUserDefinedType> object(new Tessarin(21));
  const auto argument = TestVariant::Object(20, object);
  IVariant* const arguments[] = {argument.get()};
  ArgumentCursor cursor(1, arguments, nullptr, nullptr);
  EXPECT_FALSE(cursor.ReadTessarin());
  EXPECT_EQ(cursor.Status(), MakeStatus(1, kWrongArgument));
}

TEST(ArgumentCursor, EndsABadCallWithTheNeutralValueOfItsKind) {
  ArgumentCursor cursor(0, nullptr, nullptr, nullptr);
  cursor.ReadText();
  const auto status = MakeStatus(1, kArgumentMissing);
  const AutoRefPtr<TestVariant> result(new TestVariant(0));
  EXPECT_EQ(cursor.Fail(result.get(), false), status);
  EXPECT_EQ(cursor.Fail(result.get(), 0), status);
  EXPECT_EQ(cursor.Fail(result.get(), nullptr), status);
  EXPECT_EQ(cursor.Fail(), status);
  EXPECT_EQ(result->Changes(), (std::vector<std::string>{"AssignBoolean false", "AssignNumber 0",
                                                         "AssignString null 0"}));
  EXPECT_EQ(cursor.Fail(nullptr, false), status);
  EXPECT_EQ(cursor.Fail(nullptr, 0), status);
  EXPECT_EQ(cursor.Fail(nullptr, nullptr), status);
}

}  // namespace
