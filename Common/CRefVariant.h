#pragma once

#include "Common/CUseCounted.h"
#include "Common/CVariant.h"
#include "Common/SelvaneIVariant.h"

// A view of one element of a MixedList, which spares the copy.
//
// Owns nothing: the list that holds the element must live longer than the view, and a change of the
// list's store, even an addition, leaves the view pointing at nothing. Everything else is forwarded
// to the element, so setters write through, and the threads' rules are the element's.
//
// The element's operations see the view as a foreign variant and read it through its interface,
// since its implementation id is its own.
class CRefVariant final : public Selvane::IVariant, public CUseCounted {
public:
  static constexpr std::uint64_t kImplementationId = 2;

  explicit CRefVariant(CVariant& target) : fTarget(&target) {}  // target outlives the view

  std::uint32_t AddRef() const override { return CUseCounted::AddRef(); }
  bool Release() const override { return CUseCounted::Release(); }
  std::uint32_t GetUseCount() const override { return CUseCounted::UseCount(); }

  // ---- what a view answers itself. Contract: it takes no value as a whole, gives no copy, and
  // turns nothing round.

  void Assign(const IVariant* source) override;
  IVariant* Clone() const override;
  bool ReverseList() override { return false; }
  std::uint64_t GetImplementationId() const override { return kImplementationId; }

  // ---- what the element answers

  VariantType GetType() const override { return fTarget->GetType(); }
  void SetType(VariantType type) override { fTarget->SetType(type); }
  void Clear() override { fTarget->Clear(); }
  void SetEmpty() override { fTarget->SetEmpty(); }
  void SetDouble(double value) override { fTarget->SetDouble(value); }
  double GetDouble() const override { return fTarget->GetDouble(); }
  bool IsNumberType() const override { return fTarget->IsNumberType(); }
  void SetString(Selvane::IUnicodeString* text) override { fTarget->SetString(text); }
  void SetString(VariantType type, Selvane::IUnicodeString* text) override {
    fTarget->SetString(type, text);
  }
  Selvane::IUnicodeString* GetString() const override { return fTarget->GetString(); }
  void SetLong(std::int64_t value) override { fTarget->SetLong(value); }
  void SetLong(VariantType type, std::int64_t value) override { fTarget->SetLong(type, value); }
  std::int64_t GetLong() const override { return fTarget->GetLong(); }
  void SetBool(bool value) override { fTarget->SetBool(value); }
  bool GetBool() const override { return fTarget->GetBool(); }
  bool GetIP(std::uint64_t* high, std::uint64_t* low, bool* isIPv6) const override {
    return fTarget->GetIP(high, low, isIPv6);
  }
  bool GetIPRange(std::uint64_t* high1, std::uint64_t* low1, std::uint64_t* high2,
                  std::uint64_t* low2, bool* isIPv6) const override {
    return fTarget->GetIPRange(high1, low1, high2, low2, isIPv6);
  }
  bool GetIPListElem(std::int64_t index, std::uint64_t* high, std::uint64_t* low,
                     bool* isIPv6) const override {
    return fTarget->GetIPListElem(index, high, low, isIPv6);
  }
  bool GetIPRangeListElem(std::int64_t index, std::uint64_t* high1, std::uint64_t* low1,
                          std::uint64_t* high2, std::uint64_t* low2, bool* isIPv6) const override {
    return fTarget->GetIPRangeListElem(index, high1, low1, high2, low2, isIPv6);
  }
  bool IsEqual(const IVariant* other) const override { return fTarget->IsEqual(other); }
  bool IsInRangeList(const IVariant* other) const override { return fTarget->IsInRangeList(other); }
  bool IsInRange(const IVariant* other) const override { return fTarget->IsInRange(other); }
  std::int32_t Compare(const IVariant* other) const override { return fTarget->Compare(other); }
  bool Contains(const IVariant* other, IVariant* outElement) const override {
    return fTarget->Contains(other, outElement);
  }
  bool FindFirstMatching(const IVariant* regex, IVariant** result,
                         CRegex* compiled) const override {
    return fTarget->FindFirstMatching(regex, result, compiled);
  }
  bool ContainsAll(const IVariant* other, IVariant* outElement) const override {
    return fTarget->ContainsAll(other, outElement);
  }
  bool ContainsAtLeastOne(const IVariant* other, IVariant* outElement) const override {
    return fTarget->ContainsAtLeastOne(other, outElement);
  }
  bool IsListType() const override { return fTarget->IsListType(); }
  void SortList() override { fTarget->SortList(); }
  std::uint64_t GetListSize() const override { return fTarget->GetListSize(); }
  void SetSorted(bool sorted) override { fTarget->SetSorted(sorted); }
  bool IsSorted() const override { return fTarget->IsSorted(); }
  void AddToList(std::int64_t value) override { fTarget->AddToList(value); }
  void AddToList(double value) override { fTarget->AddToList(value); }
  void AddToList(Selvane::IUnicodeString* value) override { fTarget->AddToList(value); }
  void AddToList(bool value) override { fTarget->AddToList(value); }
  void AddToList(const IVariant* value) override { fTarget->AddToList(value); }
  std::int64_t GetLongListElem(std::int64_t index, bool& ok) const override {
    return fTarget->GetLongListElem(index, ok);
  }
  double GetDoubleListElem(std::int64_t index, bool& ok) const override {
    return fTarget->GetDoubleListElem(index, ok);
  }
  bool GetBoolListElem(std::int64_t index, bool& ok) const override {
    return fTarget->GetBoolListElem(index, ok);
  }
  IVariant* GetMixedListElem(std::int64_t index, bool& ok) const override {
    return fTarget->GetMixedListElem(index, ok);
  }
  CRefVariant* GetMixedListElemRef(std::int64_t index, bool& ok) const override {
    return fTarget->GetMixedListElemRef(index, ok);
  }
  std::uint64_t GetHash() const override { return fTarget->GetHash(); }
  IVariant* GetNumberListElem(std::int64_t index, bool& ok) const override {
    return fTarget->GetNumberListElem(index, ok);
  }
  Selvane::IUnicodeString* GetStringListElem(std::int64_t index, bool& ok) const override {
    return fTarget->GetStringListElem(index, ok);
  }
  bool CanHoldValueOf(const IVariant* other) const override {
    return fTarget->CanHoldValueOf(other);
  }
  void SetListElem(std::int64_t index, std::int64_t value) override {
    fTarget->SetListElem(index, value);
  }
  void SetListElem(std::int64_t index, double value) override {
    fTarget->SetListElem(index, value);
  }
  void SetListElem(std::int64_t index, bool value) override { fTarget->SetListElem(index, value); }
  void SetListElem(std::int64_t index, Selvane::IUnicodeString* value) override {
    fTarget->SetListElem(index, value);
  }
  void SetListElem(std::int64_t index, const IVariant* value) override {
    fTarget->SetListElem(index, value);
  }
  std::int64_t Find(std::int64_t value) const override { return fTarget->Find(value); }
  std::int64_t Find(double value) const override { return fTarget->Find(value); }
  std::int64_t Find(bool value) const override { return fTarget->Find(value); }
  std::int64_t Find(Selvane::IUnicodeString* value) const override { return fTarget->Find(value); }
  std::int64_t Find(const IVariant* value) const override { return fTarget->Find(value); }
  void Erase(std::int64_t index) override { fTarget->Erase(index); }
  Selvane::IUnicodeString* ToString(Selvane::IUnicodeString* separator) const override {
    return fTarget->ToString(separator);
  }
  void Reserve(std::uint64_t count) override { fTarget->Reserve(count); }
  bool JoinLists(const IVariant* other) override { return fTarget->JoinLists(other); }
  bool EraseFromList(const IVariant* other) override { return fTarget->EraseFromList(other); }
  bool SetListFromArray(VariantType type, const void* data, std::uint64_t size) override {
    return fTarget->SetListFromArray(type, data, size);
  }
  std::int64_t FindExpression(Selvane::IUnicodeString* text) const override {
    return fTarget->FindExpression(text);
  }
  void SetMapValue(Selvane::IUnicodeString* key, const IVariant* value) override {
    fTarget->SetMapValue(key, value);
  }
  IVariant* GetMapValue(Selvane::IUnicodeString* key) const override {
    return fTarget->GetMapValue(key);
  }
  bool EraseMapValue(Selvane::IUnicodeString* key) override { return fTarget->EraseMapValue(key); }
  std::int64_t GetMapSize() const override { return fTarget->GetMapSize(); }
  IVariant* GetMapKeys() const override { return fTarget->GetMapKeys(); }
  std::int32_t Matches(Selvane::IUnicodeString* text, Selvane::IUnicodeString* out) const override {
    return fTarget->Matches(text, out);
  }
  std::int64_t Find(Selvane::IUnicodeString* value, std::int64_t start) const override {
    return fTarget->Find(value, start);
  }

private:
  CVariant* fTarget;
};
