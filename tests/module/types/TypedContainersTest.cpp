// The typed forms of the host's containers, in every type that they are there for.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "host/Data.h"
#include "host/INumberMap.h"
#include "host/IStringMap.h"
#include "host/IVector.h"
#include "module/types/Tessarin.h"
#include "module/types/TessarinList.h"
#include "tests/support/HostValues.h"

using namespace Tovrin;

namespace {

// A value of the type that is not its neutral one.
template <class T>
T Sample() {
  return T{1};
}
template <>
std::string Sample() {
  return std::string("a\0b", 3);
}
template <>
AutoRefPtr<IDataRef> Sample() {
  return AutoRefPtr<IDataRef>(new Data("bytes"));
}
template <>
AutoRefPtr<IStream> Sample() {
  return AutoRefPtr<IStream>(new SilentStream);
}
template <>
AutoRefPtr<Tessarin> Sample() {
  return AutoRefPtr<Tessarin>(new Tessarin(21));
}
template <>
AutoRefPtr<TessarinList> Sample() {
  return AutoRefPtr<TessarinList>(new TessarinList(25));
}

template <class T>
bool IsSame(const T& left, const T& right) {
  return left == right;
}
template <class T>
bool IsSame(const AutoRefPtr<T>& left, const AutoRefPtr<T>& right) {
  return left.get() == right.get();
}

template <class T>
AutoRefPtr<IVariant> Holding(const T& value) {
  AutoRefPtr<IVariant> variant(new TestVariant(kFirstUserType));
  ValueForm<T>::Write(*variant.get(), value);
  return variant;
}

// One element at 0, as the host would hold it.
template <class T>
class OneValue final : public InterfaceImpl<IVector<T>> {
public:
  explicit OneValue(AutoRefPtr<IVariant> value) : fValue(std::move(value)) {}

private:
  std::size_t Interface_GetSize() const override { return 1; }
  TypeId Interface_GetElementType() const override { return 0; }
  IVariant* Interface_Get(std::size_t index) const override {
    return index == 0 ? Share(fValue.get()).release() : nullptr;
  }
  const IVectorGeneric* Interface_Append(IVariant*) const override { return nullptr; }
  IJSON* Interface_Serialize(IContext*) const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const IJSON*, IContext*,
                                     const IVectorGeneric**) const override {
    return 0;
  }

  const AutoRefPtr<IVariant> fValue;
};

// One pair at 0.
template <class Map>
class OnePair final : public InterfaceImpl<Map> {
public:
  OnePair(AutoRefPtr<IVariant> key, AutoRefPtr<IVariant> value)
      : fKey(std::move(key)), fValue(std::move(value)) {}

private:
  TypeId Interface_GetKeyType() const override { return 0; }
  TypeId Interface_GetMappedValueType() const override { return 0; }
  std::size_t Interface_GetSize() const override { return 1; }
  IVariant* Interface_GetKeyAt(std::size_t index) const override {
    return index == 0 ? Share(fKey.get()).release() : nullptr;
  }
  IVariant* Interface_GetValueAt(std::size_t index) const override {
    return index == 0 ? Share(fValue.get()).release() : nullptr;
  }
  const IMapGeneric* Interface_Insert(IVariant*, IVariant*) const override { return nullptr; }
  IJSON* Interface_Serialize(IContext*) const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const IJSON*, IContext*, const IMapGeneric**) const override {
    return 0;
  }

  const AutoRefPtr<IVariant> fKey, fValue;
};

template <class T>
void ExpectTypedReads() {
  const T sample = Sample<T>();
  const AutoRefPtr<const IVector<T>> vector(new OneValue<T>(Holding(sample)));
  EXPECT_TRUE(IsSame(vector->GetValue(0), sample));
  EXPECT_TRUE(IsSame(vector->GetValue(1), T{})) << "past the end";

  const AutoRefPtr<const IStringMap<T>> byText(
      new OnePair<IStringMap<T>>(Holding(std::string("key")), Holding(sample)));
  EXPECT_EQ(byText->GetKey(0), "key");
  EXPECT_TRUE(IsSame(byText->GetValue(0), sample));
  EXPECT_EQ(byText->GetKey(1), "");
  EXPECT_TRUE(IsSame(byText->GetValue(1), T{}));

  const AutoRefPtr<const INumberMap<T>> byNumber(
      new OnePair<INumberMap<T>>(Holding(2.5), Holding(sample)));
  EXPECT_EQ(byNumber->GetKey(0), 2.5);
  EXPECT_TRUE(IsSame(byNumber->GetValue(0), sample));
  EXPECT_EQ(byNumber->GetKey(1), 0);
  EXPECT_TRUE(IsSame(byNumber->GetValue(1), T{}));
}

TEST(TypedContainers, ReadTheirElementsInEveryType) {
  ExpectTypedReads<bool>();
  ExpectTypedReads<std::int32_t>();
  ExpectTypedReads<std::int64_t>();
  ExpectTypedReads<std::uint64_t>();
  ExpectTypedReads<double>();
  ExpectTypedReads<std::string>();
  ExpectTypedReads<AutoRefPtr<IDataRef>>();
  ExpectTypedReads<AutoRefPtr<IStream>>();
  ExpectTypedReads<AutoRefPtr<Tessarin>>();
  ExpectTypedReads<AutoRefPtr<TessarinList>>();
}

TEST(TypedContainers, ReadAnObjectOfAnotherClassAsNone) {
  const auto list = Sample<AutoRefPtr<TessarinList>>();
  const AutoRefPtr<const IVector<AutoRefPtr<Tessarin>>> vector(
      new OneValue<AutoRefPtr<Tessarin>>(Holding(list)));
  EXPECT_FALSE(vector->GetValue(0));
  EXPECT_EQ(list->GetCount(), 2) << "this one's, and the variant's";
}

}  // namespace
