#pragma once

#include <cstdint>

#include "Common/CUseCounted.h"
#include "Common/VariantType.h"

class CRefVariant;
class CRegex;

namespace Selvane {

class IUnicodeString;

// A tagged value behind an interface: what CVariant, its views and its constants look like to those
// who do not know which of them they hold.
//
// The order of the 77 operations is the binary contract: IObject's three come first, nothing is
// ever sorted or put in between, and there is no destructor in the table.
//
// An argument is borrowed: who keeps it takes a reference. A pointer that is returned, or stored to
// an out parameter of type IVariant**, carries a reference. A text that is null counts as empty; a
// variant that is null is a misuse, reported by most operations. A position out of range and a
// value of the wrong type are answered with a neutral result: 0, false, null or -1.
class IVariant : public IObject {
public:
  // ---- the value as a whole
  virtual void Assign(const IVariant* source) = 0;
  virtual IVariant* Clone() const = 0;
  virtual VariantType GetType() const = 0;
  virtual void SetType(VariantType type) = 0;
  virtual void Clear() = 0;
  virtual void SetEmpty() = 0;

  // ---- scalars
  virtual void SetDouble(double value) = 0;
  virtual double GetDouble() const = 0;
  virtual bool IsNumberType() const = 0;
  virtual void SetString(IUnicodeString* text) = 0;
  virtual void SetString(VariantType type, IUnicodeString* text) = 0;
  virtual IUnicodeString* GetString() const = 0;
  virtual void SetLong(std::int64_t value) = 0;
  virtual void SetLong(VariantType type, std::int64_t value) = 0;
  virtual std::int64_t GetLong() const = 0;
  virtual void SetBool(bool value) = 0;
  virtual bool GetBool() const = 0;

  // ---- addresses
  virtual bool GetIP(std::uint64_t* high, std::uint64_t* low, bool* isIPv6) const = 0;
  virtual bool GetIPRange(std::uint64_t* high1, std::uint64_t* low1, std::uint64_t* high2,
                          std::uint64_t* low2, bool* isIPv6) const = 0;
  virtual bool GetIPListElem(std::int64_t index, std::uint64_t* high, std::uint64_t* low,
                             bool* isIPv6) const = 0;
  virtual bool GetIPRangeListElem(std::int64_t index, std::uint64_t* high1, std::uint64_t* low1,
                                  std::uint64_t* high2, std::uint64_t* low2,
                                  bool* isIPv6) const = 0;

  // ---- comparison and search
  virtual bool IsEqual(const IVariant* other) const = 0;
  virtual bool IsInRangeList(const IVariant* other) const = 0;
  virtual bool IsInRange(const IVariant* other) const = 0;
  virtual std::int32_t Compare(const IVariant* other) const = 0;
  virtual bool Contains(const IVariant* other, IVariant* outElement) const = 0;
  virtual bool FindFirstMatching(const IVariant* regex, IVariant** result,
                                 CRegex* compiled) const = 0;
  virtual bool ContainsAll(const IVariant* other, IVariant* outElement) const = 0;
  virtual bool ContainsAtLeastOne(const IVariant* other, IVariant* outElement) const = 0;

  // ---- lists
  virtual bool IsListType() const = 0;
  virtual void SortList() = 0;
  virtual std::uint64_t GetListSize() const = 0;
  virtual void SetSorted(bool sorted) = 0;
  virtual bool IsSorted() const = 0;
  virtual void AddToList(std::int64_t value) = 0;
  virtual void AddToList(double value) = 0;
  virtual void AddToList(IUnicodeString* value) = 0;
  virtual void AddToList(bool value) = 0;
  virtual void AddToList(const IVariant* value) = 0;
  virtual std::int64_t GetLongListElem(std::int64_t index, bool& ok) const = 0;
  virtual double GetDoubleListElem(std::int64_t index, bool& ok) const = 0;
  virtual bool GetBoolListElem(std::int64_t index, bool& ok) const = 0;
  virtual IVariant* GetMixedListElem(std::int64_t index, bool& ok) const = 0;
  virtual CRefVariant* GetMixedListElemRef(std::int64_t index, bool& ok) const = 0;
  virtual std::uint64_t GetImplementationId() const = 0;
  virtual std::uint64_t GetHash() const = 0;
  virtual IVariant* GetNumberListElem(std::int64_t index, bool& ok) const = 0;
  virtual IUnicodeString* GetStringListElem(std::int64_t index, bool& ok) const = 0;
  virtual bool CanHoldValueOf(const IVariant* other) const = 0;
  virtual void SetListElem(std::int64_t index, std::int64_t value) = 0;
  virtual void SetListElem(std::int64_t index, double value) = 0;
  virtual void SetListElem(std::int64_t index, bool value) = 0;
  virtual void SetListElem(std::int64_t index, IUnicodeString* value) = 0;
  virtual void SetListElem(std::int64_t index, const IVariant* value) = 0;
  virtual std::int64_t Find(std::int64_t value) const = 0;
  virtual std::int64_t Find(double value) const = 0;
  virtual std::int64_t Find(bool value) const = 0;
  virtual std::int64_t Find(IUnicodeString* value) const = 0;
  virtual std::int64_t Find(const IVariant* value) const = 0;
  virtual void Erase(std::int64_t index) = 0;
  virtual IUnicodeString* ToString(IUnicodeString* separator) const = 0;
  virtual bool ReverseList() = 0;
  virtual void Reserve(std::uint64_t count) = 0;
  virtual bool JoinLists(const IVariant* other) = 0;
  virtual bool EraseFromList(const IVariant* other) = 0;
  virtual bool SetListFromArray(VariantType type, const void* data, std::uint64_t size) = 0;
  virtual std::int64_t FindExpression(IUnicodeString* text) const = 0;

  // ---- maps
  virtual void SetMapValue(IUnicodeString* key, const IVariant* value) = 0;
  virtual IVariant* GetMapValue(IUnicodeString* key) const = 0;
  virtual bool EraseMapValue(IUnicodeString* key) = 0;
  virtual std::int64_t GetMapSize() const = 0;
  virtual IVariant* GetMapKeys() const = 0;

  // ---- regular expressions
  virtual std::int32_t Matches(IUnicodeString* text, IUnicodeString* out) const = 0;
  virtual std::int64_t Find(IUnicodeString* value, std::int64_t start) const = 0;

protected:
  ~IVariant() = default;
};

}  // namespace Selvane
