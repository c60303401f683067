#pragma once

#include <cstdint>

#include "Common/CUseCounted.h"
#include "Common/SelvaneIVariant.h"
#include "Common/VariantType.h"

// Values that never change, for the results that functions give most often: true, false, 0, -1 and
// the empty text. They live as long as the process, are shared by all threads, and handing one out
// allocates nothing.

// Base of the constants: an immutable Empty value. Nobody counts references to it, no operation
// changes it, and what it is asked for it does not have, in silence.
class AEmptyVariant : public Selvane::IVariant {
public:
  static constexpr std::uint64_t kImplementationId = 0;  // no CVariant's, and no view's

  constexpr AEmptyVariant() = default;
  AEmptyVariant(const AEmptyVariant&) = delete;
  AEmptyVariant& operator=(const AEmptyVariant&) = delete;

  std::uint32_t AddRef() const override { return 1; }
  bool Release() const override { return false; }
  std::uint32_t GetUseCount() const override { return 1; }

  // ---- what follows from the value

  VariantType GetType() const override { return VariantType::Empty; }
  bool IsNumberType() const override { return TypeFamily::Numbers.Has(GetType()); }
  std::uint64_t GetImplementationId() const override { return kImplementationId; }
  IVariant* Clone() const override;
  bool IsEqual(const IVariant* other) const override;
  std::int32_t Compare(const IVariant* other) const override;
  bool CanHoldValueOf(const IVariant* other) const override;
  Selvane::IUnicodeString* ToString(Selvane::IUnicodeString* separator) const override;
  std::uint64_t GetHash() const override;
  std::int64_t GetMapSize() const override { return -1; }

  // ---- what it does not have, and does not take

  void Assign(const IVariant*) override {}
  void SetType(VariantType) override {}
  void Clear() override {}
  void SetEmpty() override {}
  void SetDouble(double) override {}
  double GetDouble() const override { return 0.0; }
  void SetString(Selvane::IUnicodeString*) override {}
  void SetString(VariantType, Selvane::IUnicodeString*) override {}
  Selvane::IUnicodeString* GetString() const override { return nullptr; }
  void SetLong(std::int64_t) override {}
  void SetLong(VariantType, std::int64_t) override {}
  std::int64_t GetLong() const override { return 0; }
  void SetBool(bool) override {}
  bool GetBool() const override { return false; }
  bool GetIP(std::uint64_t*, std::uint64_t*, bool*) const override { return false; }
  bool GetIPRange(std::uint64_t*, std::uint64_t*, std::uint64_t*, std::uint64_t*,
                  bool*) const override {
    return false;
  }
  bool GetIPListElem(std::int64_t, std::uint64_t*, std::uint64_t*, bool*) const override {
    return false;
  }
  bool GetIPRangeListElem(std::int64_t, std::uint64_t*, std::uint64_t*, std::uint64_t*,
                          std::uint64_t*, bool*) const override {
    return false;
  }
  bool IsInRangeList(const IVariant*) const override { return false; }
  bool IsInRange(const IVariant*) const override { return false; }
  bool Contains(const IVariant*, IVariant*) const override { return false; }
  bool FindFirstMatching(const IVariant*, IVariant**, CRegex*) const override { return false; }
  bool ContainsAll(const IVariant*, IVariant*) const override { return false; }
  bool ContainsAtLeastOne(const IVariant*, IVariant*) const override { return false; }
  bool IsListType() const override { return false; }
  void SortList() override {}
  std::uint64_t GetListSize() const override { return 0; }
  void SetSorted(bool) override {}
  bool IsSorted() const override { return false; }
  void AddToList(std::int64_t) override {}
  void AddToList(double) override {}
  void AddToList(Selvane::IUnicodeString*) override {}
  void AddToList(bool) override {}
  void AddToList(const IVariant*) override {}
  std::int64_t GetLongListElem(std::int64_t, bool& ok) const override {
    ok = false;
    return 0;
  }
  double GetDoubleListElem(std::int64_t, bool& ok) const override {
    ok = false;
    return 0.0;
  }
  bool GetBoolListElem(std::int64_t, bool& ok) const override { return ok = false; }
  IVariant* GetMixedListElem(std::int64_t, bool& ok) const override {
    ok = false;
    return nullptr;
  }
  CRefVariant* GetMixedListElemRef(std::int64_t, bool& ok) const override {
    ok = false;
    return nullptr;
  }
  IVariant* GetNumberListElem(std::int64_t, bool& ok) const override {
    ok = false;
    return nullptr;
  }
  Selvane::IUnicodeString* GetStringListElem(std::int64_t, bool& ok) const override {
    ok = false;
    return nullptr;
  }
  void SetListElem(std::int64_t, std::int64_t) override {}
  void SetListElem(std::int64_t, double) override {}
  void SetListElem(std::int64_t, bool) override {}
  void SetListElem(std::int64_t, Selvane::IUnicodeString*) override {}
  void SetListElem(std::int64_t, const IVariant*) override {}
  std::int64_t Find(std::int64_t) const override { return -1; }
  std::int64_t Find(double) const override { return -1; }
  std::int64_t Find(bool) const override { return -1; }
  std::int64_t Find(Selvane::IUnicodeString*) const override { return -1; }
  std::int64_t Find(const IVariant*) const override { return -1; }
  std::int64_t Find(Selvane::IUnicodeString*, std::int64_t) const override { return -1; }
  void Erase(std::int64_t) override {}
  bool ReverseList() override { return false; }
  void Reserve(std::uint64_t) override {}
  bool JoinLists(const IVariant*) override { return false; }
  bool EraseFromList(const IVariant*) override { return false; }
  bool SetListFromArray(VariantType, const void*, std::uint64_t) override { return false; }
  std::int64_t FindExpression(Selvane::IUnicodeString*) const override { return -1; }
  void SetMapValue(Selvane::IUnicodeString*, const IVariant*) override {}
  IVariant* GetMapValue(Selvane::IUnicodeString*) const override { return nullptr; }
  bool EraseMapValue(Selvane::IUnicodeString*) override { return false; }
  IVariant* GetMapKeys() const override { return nullptr; }
  std::int32_t Matches(Selvane::IUnicodeString*, Selvane::IUnicodeString*) const override {
    return 0;
  }

protected:
  ~AEmptyVariant() = default;
};

class CStaticConstBoolVariant final : public AEmptyVariant {
public:
  explicit constexpr CStaticConstBoolVariant(bool value) : fValue(value) {}

  VariantType GetType() const override { return VariantType::Boolean; }
  bool GetBool() const override { return fValue; }
  bool IsEqual(const IVariant* other) const override;
  Selvane::IUnicodeString* ToString(Selvane::IUnicodeString* separator) const override;

private:
  bool fValue;
};

class CStaticConstLongVariant final : public AEmptyVariant {
public:
  explicit constexpr CStaticConstLongVariant(std::int64_t value) : fValue(value) {}

  VariantType GetType() const override { return VariantType::Long; }
  std::int64_t GetLong() const override { return fValue; }
  Selvane::IUnicodeString* ToString(Selvane::IUnicodeString* separator) const override;

private:
  std::int64_t fValue;
};

class CStaticConstEmptyStringVariant final : public AEmptyVariant {
public:
  constexpr CStaticConstEmptyStringVariant() = default;

  VariantType GetType() const override { return VariantType::String; }
  Selvane::IUnicodeString* GetString() const override;  // an object around no text
};

// The constant of a value; a Long other than 0 and -1 is a new CVariant. The caller owns a
// reference either way.
Selvane::IVariant* MakeConstBool(bool value);
Selvane::IVariant* MakeConstLong(std::int64_t value);
Selvane::IVariant* MakeConstEmptyString();
// The same, into a counted reference, which first gives up what it held.
void MakeConstBool(bool value, CUsePtr<Selvane::IVariant>& target);
void MakeConstLong(std::int64_t value, CUsePtr<Selvane::IVariant>& target);
void MakeConstEmptyString(CUsePtr<Selvane::IVariant>& target);
