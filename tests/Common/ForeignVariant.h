#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "Common/CUseCounted.h"
#include "Common/CVariant.h"
#include "Common/SelvaneIVariant.h"

// A variant of another implementation: answers with what the variant in it says, under an
// implementation id of its own. What a test sets in fLies is answered instead.
class ForeignVariant final : public Selvane::IVariant, public CUseCounted {
public:
  using Text = Selvane::IUnicodeString;

  struct Lies {
    std::optional<VariantType> type;
    std::optional<std::uint64_t> listSize;
    std::optional<bool> isNumber;
    bool givesNoObjects = false;  // null wherever an object is the answer, and true beside it
    bool holdsItself = false;     // in each element of a list and entry of a map
    bool holdsForeign = false;    // elements of a list as other implementations
    std::int64_t missing = -1;    // position of an element that it does not give
  };

  explicit ForeignVariant(const CVariant& value) : fValue(value) {}

  CVariant fValue;
  Lies fLies;

  std::uint32_t AddRef() const override { return CUseCounted::AddRef(); }
  bool Release() const override { return CUseCounted::Release(); }
  std::uint32_t GetUseCount() const override { return CUseCounted::UseCount(); }

  void Assign(const IVariant* source) override { fValue.Assign(source); }
  IVariant* Clone() const override { return new ForeignVariant(fValue); }
  VariantType GetType() const override { return fLies.type.value_or(fValue.GetType()); }
  void SetType(VariantType type) override { fValue.SetType(type); }
  void Clear() override { fValue.Clear(); }
  void SetEmpty() override { fValue.SetEmpty(); }
  void SetDouble(double value) override { fValue.SetDouble(value); }
  double GetDouble() const override { return fValue.GetDouble(); }
  bool IsNumberType() const override { return fLies.isNumber.value_or(fValue.IsNumberType()); }
  void SetString(Text* text) override { fValue.SetString(text); }
  void SetString(VariantType type, Text* text) override { fValue.SetString(type, text); }
  Text* GetString() const override { return fLies.givesNoObjects ? nullptr : fValue.GetString(); }
  void SetLong(std::int64_t value) override { fValue.SetLong(value); }
  void SetLong(VariantType type, std::int64_t value) override { fValue.SetLong(type, value); }
  std::int64_t GetLong() const override { return fValue.GetLong(); }
  void SetBool(bool value) override { fValue.SetBool(value); }
  bool GetBool() const override { return fValue.GetBool(); }
  bool GetIP(std::uint64_t* high, std::uint64_t* low, bool* isIPv6) const override {
    return fValue.GetIP(high, low, isIPv6);
  }
  bool GetIPRange(std::uint64_t* high1, std::uint64_t* low1, std::uint64_t* high2,
                  std::uint64_t* low2, bool* isIPv6) const override {
    return fValue.GetIPRange(high1, low1, high2, low2, isIPv6);
  }
  bool GetIPListElem(std::int64_t index, std::uint64_t* high, std::uint64_t* low,
                     bool* isIPv6) const override {
    return fValue.GetIPListElem(index, high, low, isIPv6);
  }
  bool GetIPRangeListElem(std::int64_t index, std::uint64_t* high1, std::uint64_t* low1,
                          std::uint64_t* high2, std::uint64_t* low2, bool* isIPv6) const override {
    return fValue.GetIPRangeListElem(index, high1, low1, high2, low2, isIPv6);
  }
  bool IsEqual(const IVariant* other) const override { return fValue.IsEqual(other); }
  bool IsInRangeList(const IVariant* other) const override { return fValue.IsInRangeList(other); }
  bool IsInRange(const IVariant* other) const override { return fValue.IsInRange(other); }
  std::int32_t Compare(const IVariant* other) const override { return fValue.Compare(other); }
  bool Contains(const IVariant* other, IVariant* out) const override {
    return fValue.Contains(other, out);
  }
  bool FindFirstMatching(const IVariant* regex, IVariant** result,
                         CRegex* compiled) const override {
    return fValue.FindFirstMatching(regex, result, compiled);
  }
  bool ContainsAll(const IVariant* other, IVariant* out) const override {
    return fValue.ContainsAll(other, out);
  }
  bool ContainsAtLeastOne(const IVariant* other, IVariant* out) const override {
    return fValue.ContainsAtLeastOne(other, out);
  }
  bool IsListType() const override { return fValue.IsListType(); }
  void SortList() override { fValue.SortList(); }
  std::uint64_t GetListSize() const override {
    return fLies.listSize ? *fLies.listSize : fValue.GetListSize();
  }
  void SetSorted(bool sorted) override { fValue.SetSorted(sorted); }
  bool IsSorted() const override { return fValue.IsSorted(); }
  void AddToList(std::int64_t value) override { fValue.AddToList(value); }
  void AddToList(double value) override { fValue.AddToList(value); }
  void AddToList(Text* value) override { fValue.AddToList(value); }
  void AddToList(bool value) override { fValue.AddToList(value); }
  void AddToList(const IVariant* value) override { fValue.AddToList(value); }
  std::int64_t GetLongListElem(std::int64_t index, bool& ok) const override {
    return fValue.GetLongListElem(index, ok);
  }
  double GetDoubleListElem(std::int64_t index, bool& ok) const override {
    return fValue.GetDoubleListElem(index, ok);
  }
  bool GetBoolListElem(std::int64_t index, bool& ok) const override {
    return fValue.GetBoolListElem(index, ok);
  }
  IVariant* GetMixedListElem(std::int64_t index, bool& ok) const override {
    if (fLies.holdsItself) {
      ok = true;
      return Itself();
    }
    if (fLies.holdsForeign) {
      CVariant element;
      ok = fValue.ReadElement(index, element);
      return ok ? new ForeignVariant(element) : nullptr;
    }
    return Given(index, ok, [&] { return fValue.GetMixedListElem(index, ok); });
  }
  CRefVariant* GetMixedListElemRef(std::int64_t index, bool& ok) const override {
    return fValue.GetMixedListElemRef(index, ok);
  }
  std::uint64_t GetImplementationId() const override { return 77; }
  std::uint64_t GetHash() const override { return fValue.GetHash(); }
  IVariant* GetNumberListElem(std::int64_t index, bool& ok) const override {
    return Given(index, ok, [&] { return fValue.GetNumberListElem(index, ok); });
  }
  Text* GetStringListElem(std::int64_t index, bool& ok) const override {
    return Given(index, ok, [&] { return fValue.GetStringListElem(index, ok); });
  }
  bool CanHoldValueOf(const IVariant* other) const override { return fValue.CanHoldValueOf(other); }
  void SetListElem(std::int64_t index, std::int64_t value) override {
    fValue.SetListElem(index, value);
  }
  void SetListElem(std::int64_t index, double value) override { fValue.SetListElem(index, value); }
  void SetListElem(std::int64_t index, bool value) override { fValue.SetListElem(index, value); }
  void SetListElem(std::int64_t index, Text* value) override { fValue.SetListElem(index, value); }
  void SetListElem(std::int64_t index, const IVariant* value) override {
    fValue.SetListElem(index, value);
  }
  std::int64_t Find(std::int64_t value) const override { return fValue.Find(value); }
  std::int64_t Find(double value) const override { return fValue.Find(value); }
  std::int64_t Find(bool value) const override { return fValue.Find(value); }
  std::int64_t Find(Text* value) const override { return fValue.Find(value); }
  std::int64_t Find(const IVariant* value) const override { return fValue.Find(value); }
  void Erase(std::int64_t index) override { fValue.Erase(index); }
  Text* ToString(Text* separator) const override { return fValue.ToString(separator); }
  bool ReverseList() override { return fValue.ReverseList(); }
  void Reserve(std::uint64_t count) override { fValue.Reserve(count); }
  bool JoinLists(const IVariant* other) override { return fValue.JoinLists(other); }
  bool EraseFromList(const IVariant* other) override { return fValue.EraseFromList(other); }
  bool SetListFromArray(VariantType type, const void* data, std::uint64_t size) override {
    return fValue.SetListFromArray(type, data, size);
  }
  std::int64_t FindExpression(Text* text) const override { return fValue.FindExpression(text); }
  void SetMapValue(Text* key, const IVariant* value) override { fValue.SetMapValue(key, value); }
  IVariant* GetMapValue(Text* key) const override {
    if (fLies.holdsItself) return Itself();
    return fLies.givesNoObjects ? nullptr : fValue.GetMapValue(key);
  }
  bool EraseMapValue(Text* key) override { return fValue.EraseMapValue(key); }
  std::int64_t GetMapSize() const override { return fValue.GetMapSize(); }
  IVariant* GetMapKeys() const override {
    return fLies.givesNoObjects ? nullptr : fValue.GetMapKeys();
  }
  std::int32_t Matches(Text* text, Text* out) const override { return fValue.Matches(text, out); }
  std::int64_t Find(Text* value, std::int64_t start) const override {
    return fValue.Find(value, start);
  }

private:
  IVariant* Itself() const {
    AddRef();
    return const_cast<ForeignVariant*>(this);
  }
  template <class Read>
  auto Given(std::int64_t index, bool& ok, Read read) const -> decltype(read()) {
    if (!fLies.givesNoObjects && index != fLies.missing) return read();
    ok = fLies.givesNoObjects;
    return nullptr;
  }
};

inline CUsePtr<ForeignVariant> Foreign(const CVariant& value) {
  return MakeUseCounted<ForeignVariant>(value);
}
