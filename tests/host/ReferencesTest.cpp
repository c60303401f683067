#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/AutoRefPtr.h"
#include "host/Data.h"
#include "host/IHash.h"
#include "host/IUserDefinedType.h"
#include "host/InterfaceImpl.h"
#include "host/TypeIds.h"
#include "tests/support/HostContext.h"
#include "tests/support/HostJSON.h"

namespace {

using namespace Tovrin;

// Tells when it ends.
class Counted final : public InterfaceImpl<IObject> {
public:
  explicit Counted(std::function<void()> atEnd = {}) : fAtEnd(std::move(atEnd)) {}

private:
  ~Counted() override {
    if (fAtEnd) fAtEnd();
  }
  std::function<void()> fAtEnd;
};

TEST(InterfaceImpl, StartsWithTheCreatorsReference) {
  auto* object = new Counted;
  EXPECT_EQ(object->GetCount(), 1);
  object->AddRef();
  EXPECT_EQ(object->GetCount(), 2);
  EXPECT_FALSE(object->Release());
  EXPECT_EQ(object->GetCount(), 1);
  EXPECT_TRUE(object->Release());
}

TEST(InterfaceImpl, KeepsItsCountDirectlyBehindTheTable) {
  auto* object = new Counted;
  object->AddRef();
  object->AddRef();
  std::int32_t count = 0;
  std::memcpy(&count, reinterpret_cast<const char*>(object) + sizeof(void*), sizeof count);
  EXPECT_EQ(count, 3);
  while (!object->Release()) {
  }
}

TEST(InterfaceImpl, CountsAcrossThreadsAndEndsOnce) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 100000;
  int ended = 0;
  auto* object = new Counted([&] { ++ended; });
  std::atomic<int> releasedLast{0};
  for (int i = 1; i < kThreads; ++i) object->AddRef();
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        for (int round = 0; round < kRounds; ++round) {
          object->AddRef();
          if (object->Release()) ++releasedLast;
        }
        if (object->Release()) ++releasedLast;
      });
    }
  }
  EXPECT_EQ(releasedLast, 1);
  EXPECT_EQ(ended, 1);
}

TEST(AutoRefPtr, TakesOverTheReferenceOfARawPointer) {
  auto* object = new Counted;
  object->AddRef();
  { AutoRefPtr<Counted> held(object); }
  EXPECT_EQ(object->GetCount(), 1);
  object->Release();
  static_assert(!std::is_convertible_v<Counted*, AutoRefPtr<Counted>>);
}

TEST(AutoRefPtr, CopiesCountAndMovesDoNot) {
  AutoRefPtr<Counted> first(new Counted);
  AutoRefPtr<Counted> second(first);
  EXPECT_EQ(first->GetCount(), 2);
  AutoRefPtr<Counted> third(std::move(second));
  EXPECT_FALSE(second);
  EXPECT_EQ(first->GetCount(), 2);
  second = third;
  EXPECT_EQ(first->GetCount(), 3);
  second = std::move(third);
  EXPECT_FALSE(third);
  EXPECT_EQ(first->GetCount(), 2);
  const AutoRefPtr<const Counted> readOnly(Share<const Counted>(first.get()));
  EXPECT_EQ(first->GetCount(), 3);
  EXPECT_EQ(readOnly.get(), first.get());
}

TEST(AutoRefPtr, SurvivesAssignmentToItself) {
  AutoRefPtr<Counted> held(new Counted);
  auto& same = held;
  held = same;
  EXPECT_EQ(held->GetCount(), 1);
  held = std::move(same);
  ASSERT_TRUE(held);
  EXPECT_EQ(held->GetCount(), 1);
}

TEST(AutoRefPtr, EmptiesByResetAndRelease) {
  int ended = 0;
  AutoRefPtr<Counted> held(new Counted([&] { ++ended; }));
  held.reset();
  held.reset();
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(held.get(), nullptr);
  held = AutoRefPtr<Counted>(new Counted([&] { ++ended; }));
  Counted* raw = held.release();
  EXPECT_FALSE(held);
  EXPECT_EQ(raw->GetCount(), 1);
  EXPECT_EQ(held.release(), nullptr);
  raw->Release();
  EXPECT_EQ(ended, 2);
  EXPECT_FALSE(Share<Counted>(nullptr));
}

// The dying object's destructor comes back to the pointer that held it.
TEST(AutoRefPtr, IsEmptyOrNewBeforeTheOldObjectEnds) {
  AutoRefPtr<Counted> held;
  std::vector<bool> wasHeld;
  const auto look = [&] {
    wasHeld.push_back(static_cast<bool>(held));
    held.reset();
  };
  held = AutoRefPtr<Counted>(new Counted(look));
  held.reset();
  held = AutoRefPtr<Counted>(new Counted(look));
  held = AutoRefPtr<Counted>(new Counted);
  EXPECT_EQ(wasHeld, (std::vector<bool>{false, false}));
  EXPECT_TRUE(held);
}

TEST(TypeIds, TellTheContainerForm) {
  struct Row {
    TypeId id;
    bool vector, numberMap, stringMap;
  };
  for (const Row& row :
       {Row{0, false, false, false}, Row{1, false, false, false}, Row{2, true, false, false},
        Row{3, false, true, false}, Row{4, false, false, true}, Row{10, true, false, false},
        Row{12, false, false, true}, Row{21, false, false, false}, Row{22, true, false, false},
        Row{23, false, true, false}, Row{24, false, false, true},
        Row{0xfffffffc, false, false, true}}) {
    SCOPED_TRACE(row.id);
    EXPECT_EQ(IUserDefinedType::IsVector(row.id), row.vector);
    EXPECT_EQ(IUserDefinedType::IsNumberMap(row.id), row.numberMap);
    EXPECT_EQ(IUserDefinedType::IsStringMap(row.id), row.stringMap);
  }
  EXPECT_EQ(kTypeString + kVectorOf, 10u);
  EXPECT_EQ(kTypeString + kStringMapOf, 12u);
}

// A user-defined type ordered by a number; the tests below override a form of Serialize each.
class Ordered : public InterfaceImpl<IUserDefinedType> {
public:
  explicit Ordered(int rank) : fRank(rank) {}

protected:
  bool Interface_LessThan(const IUserDefinedType* other) const override {
    return fRank < static_cast<const Ordered*>(other)->fRank;
  }
  const char* Interface_GetName() const override { return "Ordered"; }
  IUserDefinedType* Interface_Clone() const override { return new Ordered(fRank); }
  TypeId Interface_GetType() const override { return kFirstUserType; }
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }

  const int fRank;
};

class WithContextFree final : public Ordered {
public:
  explicit WithContextFree(std::string text) : Ordered(0), fText(std::move(text)) {}

private:
  std::uint8_t Interface_Deserialize(const IJSON*) override { return 1; }
  IJSON* Interface_Serialize() const override { return new TextJSON(fText); }
  const std::string fText;
};

class WithContextual final : public Ordered {
public:
  explicit WithContextual(std::string text) : Ordered(0), fText(std::move(text)) {}

private:
  std::uint8_t Interface_Deserialize(const IJSON*, IContext*) override { return 1; }
  IJSON* Interface_Serialize(IContext*) const override { return new TextJSON(fText); }
  const std::string fText;
};

class Incomparable final : public Ordered {
public:
  Incomparable() : Ordered(0) {}

private:
  bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
};

TEST(IUserDefinedType, IsEqualWhenNeitherIsLess) {
  const AutoRefPtr<Ordered> one(new Ordered(1));
  const AutoRefPtr<Ordered> alsoOne(new Ordered(1));
  const AutoRefPtr<Ordered> two(new Ordered(2));
  EXPECT_TRUE(one->IsEqual(alsoOne.get()));
  EXPECT_FALSE(one->IsEqual(two.get()));
  EXPECT_FALSE(two->IsEqual(one.get()));
  EXPECT_FALSE(one->IsEqual(nullptr));
  const AutoRefPtr<Incomparable> any(new Incomparable);
  const AutoRefPtr<Incomparable> other(new Incomparable);
  EXPECT_TRUE(any->IsEqual(other.get()));
}

TEST(IUserDefinedType, OneFormOfEachPairForwardsToTheOther) {
  const AutoRefPtr<TestContext> context(new TestContext);
  struct Row {
    const char* name;
    AutoRefPtr<IUserDefinedType> object;
    bool withContext, withNull, contextFree;  // which calls succeed
  };
  const Row rows[] = {
      // Contract: the context-free form alone is not reached with a null context.
      {"context-free", AutoRefPtr<IUserDefinedType>(new WithContextFree("{}")), true, false, true},
      {"with context", AutoRefPtr<IUserDefinedType>(new WithContextual("{}")), true, true, true},
      {"neither", AutoRefPtr<IUserDefinedType>(new Ordered(1)), false, false, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.object->Deserialize(nullptr, context.get()), row.withContext);
    EXPECT_EQ(static_cast<bool>(row.object->Serialize(context.get())), row.withContext);
    EXPECT_EQ(row.object->Deserialize(nullptr, nullptr), row.withNull);
    EXPECT_EQ(static_cast<bool>(row.object->Serialize(nullptr)), row.withNull);
    EXPECT_EQ(row.object->Deserialize(nullptr), row.contextFree);
    EXPECT_EQ(static_cast<bool>(row.object->Serialize()), row.contextFree);
  }
}

TEST(IUserDefinedType, ReadsItsTextFromTheJson) {
  const AutoRefPtr<TestContext> context(new TestContext);
  for (const std::size_t length : {0, 1, 1022, 1023, 1024, 1025, 5000}) {
    SCOPED_TRACE(length);
    const std::string expected(length, 'x');
    const AutoRefPtr<WithContextFree> object(new WithContextFree(expected));
    std::string text = "left over";
    object->ToString(text);
    EXPECT_TRUE(text == expected);
    EXPECT_EQ(object->ToStringSize(), length);
    object->ToString(text, context.get());
    EXPECT_TRUE(text == expected);
    EXPECT_EQ(object->ToStringSize(context.get()), length);
  }
}

TEST(IUserDefinedType, HasAnEmptyTextWithoutJson) {
  const AutoRefPtr<WithContextFree> object(new WithContextFree("text"));
  std::string text = "left over";
  object->ToString(text, nullptr);
  EXPECT_EQ(text, "");
  EXPECT_EQ(object->ToStringSize(nullptr), 0u);
}

class Unserialisable final : public Ordered {
public:
  Unserialisable() : Ordered(0) {}

private:
  IJSON* Interface_Serialize(IContext*) const override { throw std::runtime_error("not this one"); }
};

TEST(IUserDefinedType, HasAnEmptyTextWhereItCannotBeSerialised) {
  const AutoRefPtr<Unserialisable> object(new Unserialisable);
  std::string text = "left over";
  EXPECT_THROW(object->ToString(text, nullptr), std::runtime_error);
  EXPECT_EQ(text, "");
  text = "left over";
  EXPECT_THROW(object->ToString(text), std::runtime_error);
  EXPECT_EQ(text, "");
}

TEST(IJSON, AsksAgainWithRoomWhenATextIsLong) {
  for (const std::size_t length : {0, 3, 1022, 1023, 1024, 5000}) {
    SCOPED_TRACE(length);
    const std::string text(length, 'y');
    const AutoRefPtr<TextJSON> json(new TextJSON(text));
    EXPECT_TRUE(json->ToString("  ") == text);
    EXPECT_EQ(json->indents.front(), "  ");
    EXPECT_EQ(json->sizesOffered.front(), 1024u);
    EXPECT_EQ(json->sizesOffered.size(), length + 1 < 1024 ? 1u : 2u);
    EXPECT_GT(json->sizesOffered.back(), length);
  }
}

TEST(IJSON, TextEndsAtItsFirstZeroByte) {
  const AutoRefPtr<TextJSON> json(new TextJSON(std::string("ab\0cd", 5)));
  EXPECT_EQ(json->ToString(), "ab");
}

// ------------------------------------------------------------------------------------ Data

AutoRefPtr<Data> Bytes(const std::string& bytes) {
  return AutoRefPtr<Data>(new Data(bytes));
}

// A host's data reference that does not lie in one piece, and may end early.
class Pieces final : public InterfaceImpl<IDataRef> {
public:
  Pieces(std::string bytes, std::size_t readable) : fBytes(std::move(bytes)), fReadable(readable) {}

  mutable std::vector<std::size_t> sizesRead;

private:
  std::size_t Interface_GetSize() const override { return fBytes.size(); }
  void Interface_Assign(const void*, std::size_t) override {}
  std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t offset) const override {
    sizesRead.push_back(size);
    if (offset >= fReadable) return 0;
    const std::size_t count = std::min(size, fReadable - offset);
    std::memcpy(buffer, fBytes.data() + offset, count);
    return count;
  }
  std::uint8_t Interface_IsEqual(const IDataRef*) const override { return 0; }
  IDataRef* Interface_Clone() const override { return nullptr; }

  const std::string fBytes;
  const std::size_t fReadable;
};

TEST(Data, ReadsFromAnOffset) {
  const auto data = Bytes("abcdef");
  struct Row {
    std::size_t size, offset;
    std::string expected;
  };
  for (const Row& row :
       {Row{3, 0, "abc"}, Row{3, 2, "cde"}, Row{10, 4, "ef"}, Row{10, 5, "f"}, Row{1, 6, ""},
        Row{1, 7, ""}, Row{1, SIZE_MAX, ""}, Row{0, 0, ""}, Row{SIZE_MAX, 1, "bcdef"}}) {
    SCOPED_TRACE(testing::Message() << row.size << " at " << row.offset);
    char buffer[16] = {};
    EXPECT_EQ(data->Read(buffer, row.size, row.offset), row.expected.size());
    EXPECT_EQ(std::string(buffer), row.expected);
  }
}

TEST(Data, ReadsNothingIntoNoBuffer) {
  EXPECT_EQ(Bytes("abc")->Read(nullptr, 0, 0), 0u);
  EXPECT_EQ(Bytes("abc")->Read(nullptr, 5, 3), 0u);
  EXPECT_EQ(Bytes("")->Read(nullptr, 5, 0), 0u);
}

TEST(Data, HoldsBytesAndNotText) {
  const std::string bytes("a\0b\0", 4);
  const auto data = Bytes("before");
  data->Assign(bytes.data(), bytes.size());
  EXPECT_EQ(data->GetSize(), 4u);
  EXPECT_EQ(std::memcmp(data->GetData(), bytes.data(), 4), 0);
  EXPECT_TRUE(data->IsEqual(Bytes(bytes).get()));
  data->Assign(nullptr, 0);
  EXPECT_EQ(data->GetSize(), 0u);
}

TEST(Data, AssignsFromItsOwnBytes) {
  const auto data = Bytes("abcdef");
  data->Assign(static_cast<const char*>(data->GetData()) + 2, 3);
  EXPECT_TRUE(data->IsEqual(Bytes("cde").get()));
}

TEST(Data, ComparesBytes) {
  const auto data = Bytes("abc");
  EXPECT_FALSE(data->IsEqual(nullptr));
  EXPECT_TRUE(data->IsEqual(data.get()));
  EXPECT_TRUE(data->IsEqual(Bytes("abc").get()));
  EXPECT_FALSE(data->IsEqual(Bytes("abd").get()));
  EXPECT_FALSE(data->IsEqual(Bytes("ab").get()));
  EXPECT_TRUE(Bytes("")->IsEqual(Bytes("").get()));
  const AutoRefPtr<Pieces> nothing(new Pieces("", 0));
  EXPECT_TRUE(Bytes("")->IsEqual(nothing.get()));
  EXPECT_TRUE(nothing->sizesRead.empty());
}

TEST(Data, ReadsAForeignReferenceInPieces) {
  for (const std::size_t size : {1, 8191, 8192, 8193, 20000}) {
    SCOPED_TRACE(size);
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7);
    const auto data = Bytes(bytes);

    const AutoRefPtr<Pieces> same(new Pieces(bytes, size));
    EXPECT_TRUE(data->IsEqual(same.get()));
    EXPECT_EQ(same->sizesRead.size(), (size + Data::kCompareChunk - 1) / Data::kCompareChunk);
    for (const std::size_t asked : same->sizesRead) EXPECT_LE(asked, Data::kCompareChunk);

    const AutoRefPtr<Pieces> cut(new Pieces(bytes, size - 1));
    EXPECT_FALSE(data->IsEqual(cut.get())) << "a short read";
    bytes.back() = static_cast<char>(bytes.back() + 1);
    const AutoRefPtr<Pieces> different(new Pieces(bytes, size));
    EXPECT_FALSE(data->IsEqual(different.get())) << "the last byte";
  }
}

TEST(Data, ClonesAreIndependent) {
  const auto data = Bytes("abc");
  const AutoRefPtr<IDataRef> clone = data->Clone();
  EXPECT_EQ(clone->GetCount(), 1);
  data->Assign("x", 1);
  EXPECT_TRUE(clone->IsEqual(Bytes("abc").get()));
}

}  // namespace
