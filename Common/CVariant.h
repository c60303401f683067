#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/CUseCounted.h"
#include "Common/SelvaneIVariant.h"
#include "Common/VariantElements.h"
#include "Common/VariantTexts.h"
#include "Common/VariantType.h"
#include "Common/qzvector.h"

class CForeignAllowance;
class CRegexVectorHolder;
class CVariantReader;

// The one tagged value of the library: 32 types of scalars, lists, addresses, expressions and maps
// in a small header over a raw store. There is no subclass a type: what a type is stands in
// kVariantTypeTable, what an element is in VariantElements.h, and the operations are written over
// these. A value of up to 8 bytes takes no memory of its own; a list is one flat array.
//
// Owns its elements. Text comes in and goes out as counted handles; variants come in as borrowed
// pointers, and go out with a reference.
//
// Misuse is no exception: a wrong type, a null argument or a position out of range is reported to
// the debug log at level 1, once, and answered with 0, false, null or -1. What is tested first is
// reported: the null argument, this value's type, the argument's type, the position.
//
// An argument of any implementation is taken. A CVariant is recognised by its implementation id and
// read directly, anything else is read through the interface; both roads run through the same code
// (CVariantReader.h) except where a Contract comment says how they differ.
//
// Any number of threads may read a variant that nobody writes. Reading fills caches: fHash is a
// plain store of what every thread computes alike; fIndex and fRegexHolder are published by
// compare-and-swap from null, and the loser deletes its own; fLookupCount advances by
// compare-and-swap. Every change of the value throws all caches but the count away.
//
// Not movable as bytes, for its store may point into itself: lists of variants move their elements
// one by one.
class CVariant final : public Selvane::IVariant, public CUseCounted {
public:
  static constexpr std::uint64_t kImplementationId = 3;  // a CRefVariant answers 2

  CVariant() = default;                 // Empty
  explicit CVariant(VariantType type);  // neutral content; an unknown type is reported, and Empty
  explicit CVariant(double value);
  explicit CVariant(std::int64_t value);
  explicit CVariant(bool value);
  explicit CVariant(CStringImpl* text);
  explicit CVariant(const char*) = delete;  // would be a truth value
  CVariant(VariantType type, std::int64_t value);
  CVariant(const CVariant& other);
  // Takes the value out of source, caches included. Source is Empty and takes no value any more.
  CVariant(CVariant&& source) noexcept;
  CVariant& operator=(const CVariant& other);
  ~CVariant() override;

  // ---- IObject and CUseCounted lead to the same count
  std::uint32_t AddRef() const override { return CUseCounted::AddRef(); }
  bool Release() const override { return CUseCounted::Release(); }
  std::uint32_t GetUseCount() const override { return CUseCounted::UseCount(); }

  // ---- the value as a whole
  void Assign(const IVariant* source) override;
  IVariant* Clone() const override;
  VariantType GetType() const override { return fType; }
  void SetType(VariantType type) override;
  void Clear() override;
  void SetEmpty() override;
  std::uint64_t GetImplementationId() const override { return kImplementationId; }

  // ---- scalars
  void SetDouble(double value) override;
  double GetDouble() const override;
  bool IsNumberType() const override { return TypeFamily::Numbers.Has(fType); }
  void SetString(Selvane::IUnicodeString* text) override;
  void SetString(VariantType type, Selvane::IUnicodeString* text) override;
  Selvane::IUnicodeString* GetString() const override;
  void SetString(CStringImpl* text);
  void SetString(VariantType type, CStringImpl* text);
  // Contract: reports what the interface's GetString answers with null in silence.
  CStringPtr GetText() const;
  void SetLong(std::int64_t value) override;
  void SetLong(VariantType type, std::int64_t value) override;
  std::int64_t GetLong() const override;
  void SetBool(bool value) override;
  bool GetBool() const override;
  bool CanHoldValueOf(const IVariant* other) const override;
  // The records of an IP, IPList or IPRange; none for any other type.
  std::span<const AddressRecord> Addresses() const;
  // The records of a HostAndCertificate or a list of them; none for any other type.
  std::span<const HostRecord> Hosts() const;
  // The elements of a MixedList, DimensionList or IPRangeList; none for any other type.
  std::span<const CVariant> Variants() const;

  // ---- addresses
  bool GetIP(std::uint64_t* high, std::uint64_t* low, bool* isIPv6) const override;
  bool GetIPRange(std::uint64_t* high1, std::uint64_t* low1, std::uint64_t* high2,
                  std::uint64_t* low2, bool* isIPv6) const override;
  bool GetIPListElem(std::int64_t index, std::uint64_t* high, std::uint64_t* low,
                     bool* isIPv6) const override;
  bool GetIPRangeListElem(std::int64_t index, std::uint64_t* high1, std::uint64_t* low1,
                          std::uint64_t* high2, std::uint64_t* low2, bool* isIPv6) const override;
  bool IsInRange(const IVariant* other) const override;
  bool IsInRangeList(const IVariant* other) const override;

  // ---- comparison
  bool IsEqual(const IVariant* other) const override;
  bool IsEqual(const CVariant& other) const;
  std::int32_t Compare(const IVariant* other) const override;
  std::int32_t Compare(const CVariant& other) const;
  bool Contains(const IVariant* other, IVariant* outElement) const override;
  bool ContainsAll(const IVariant* other, IVariant* outElement) const override;
  bool ContainsAtLeastOne(const IVariant* other, IVariant* outElement) const override;
  // Two numbers of any types, as longs when both are integers, else as doubles. What is no number
  // is reported, and answered with false.
  enum class NumberRelation { Equal, Less };
  bool DoNumberComparison(const IVariant& other, NumberRelation relation) const;
  // Whether that much of another number list's elements are found in this one. What is no number
  // list is reported, and answered with false. The element found last is assigned to outElement,
  // which may be null.
  enum class Share { All, AtLeastOne };
  bool DoNumberListComparison(const IVariant& other, Share share, IVariant* outElement) const;

  // ---- lists: adding, reading, changing
  bool IsListType() const override;
  std::uint64_t GetListSize() const override;
  // Elements of a list, entries of a map, else 0; reports nothing.
  std::uint64_t SizeOfList() const;
  void Reserve(std::uint64_t count) override;
  void AddToList(std::int64_t value) override;
  void AddToList(double value) override;
  void AddToList(Selvane::IUnicodeString* value) override;
  void AddToList(bool value) override;
  void AddToList(const IVariant* value) override;
  void AddToList(CStringImpl* value);
  void AddToList(const char*) = delete;  // would be a truth value
  void AddToList_Ref(const IVariant& value);
  std::int64_t GetLongListElem(std::int64_t index, bool& ok) const override;
  double GetDoubleListElem(std::int64_t index, bool& ok) const override;
  bool GetBoolListElem(std::int64_t index, bool& ok) const override;
  IVariant* GetMixedListElem(std::int64_t index, bool& ok) const override;
  CRefVariant* GetMixedListElemRef(std::int64_t index, bool& ok) const override;
  IVariant* GetNumberListElem(std::int64_t index, bool& ok) const override;
  IVariant* GetAnyNumberListElem(std::int64_t index, bool& ok) const;
  Selvane::IUnicodeString* GetStringListElem(std::int64_t index, bool& ok) const override;
  CStringPtr GetTextListElem(std::int64_t index, bool& ok) const;
  // Makes out, which is Empty, a copy of the element in the element's own type. False, in silence,
  // for a type without elements of their own and for a position out of range.
  bool ReadElement(std::int64_t index, CVariant& out) const;
  void SetListElem(std::int64_t index, std::int64_t value) override;
  void SetListElem(std::int64_t index, double value) override;
  void SetListElem(std::int64_t index, bool value) override;
  void SetListElem(std::int64_t index, Selvane::IUnicodeString* value) override;
  void SetListElem(std::int64_t index, const IVariant* value) override;
  void SetListElem(std::int64_t index, CStringImpl* value);
  void SetListElem(std::int64_t index, const char*) = delete;
  void Erase(std::int64_t index) override;
  bool ReverseList() override;
  bool JoinLists(const IVariant* other) override;
  bool EraseFromList(const IVariant* other) override;
  bool SetListFromArray(VariantType type, const void* data, std::uint64_t size) override;

  // ---- lists: order and search
  void SortList() override;
  void SetSorted(bool sorted) override;
  bool IsSorted() const override { return fSorted; }
  std::int64_t Find(std::int64_t value) const override;
  std::int64_t Find(double value) const override;
  std::int64_t Find(bool value) const override;
  std::int64_t Find(Selvane::IUnicodeString* value) const override;
  std::int64_t Find(const IVariant* value) const override;
  std::int64_t Find(Selvane::IUnicodeString* value, std::int64_t start) const override;
  std::int64_t Find(const char*) const = delete;
  // The first equal element at or behind start; a start below 0 or beyond the end finds nothing.
  std::int64_t FindFrom(std::int64_t start, std::int64_t value) const;
  std::int64_t FindFrom(std::int64_t start, double value) const;
  std::int64_t FindFrom(std::int64_t start, bool value) const;
  std::int64_t FindFrom(std::int64_t start, CStringImpl* value) const;
  std::int64_t FindFrom(std::int64_t start, const AddressRecord& value) const;
  std::int64_t FindFrom(std::int64_t start, const IVariant* value) const;

  // ---- text
  Selvane::IUnicodeString* ToString(Selvane::IUnicodeString* separator) const override;
  CStringPtr ToText(const CStringPtr& separator) const;
  // Appends the text form in UTF-8.
  void AppendText(std::string_view separator, std::string& out) const;
  std::uint64_t GetHash() const override;

  // ---- maps
  void SetMapValue(Selvane::IUnicodeString* key, const IVariant* value) override;
  IVariant* GetMapValue(Selvane::IUnicodeString* key) const override;
  bool EraseMapValue(Selvane::IUnicodeString* key) override;
  std::int64_t GetMapSize() const override;
  IVariant* GetMapKeys() const override;
  void SetMapValue(const CStringPtr& key, const IVariant* value);
  void SetMapValue(const CStringPtr& key, std::int64_t value);
  void SetMapValue(const CStringPtr& key, const CStringPtr& value);
  CUsePtr<CVariant> FindMapValue(const CStringPtr& key) const;
  bool EraseMapValue(const CStringPtr& key);
  // The entries in the order of their keys; null on what is no Map.
  const VariantMap* MapEntries() const;

  // ---- regular expressions
  bool FindFirstMatching(const IVariant* regex, IVariant** result, CRegex* compiled) const override;
  std::int64_t FindExpression(Selvane::IUnicodeString* text) const override;
  std::int32_t Matches(Selvane::IUnicodeString* text, Selvane::IUnicodeString* out) const override;
  // 1 for a match, 0 for none and for what is no regex, -1 when an expression is bad.
  std::int32_t Matches(std::string_view text) const;
  // Position of the first text of a list that the expression matches; -1 for none, and for null.
  std::int64_t FindMatching(const CRegex* regex) const;
  // Builds what matching needs now; -1 tells that an expression is bad.
  std::int32_t TriggerRegexBuild() const;

  // ---- for tests, and for those who watch
  bool HasIndex() const { return fIndex.load(std::memory_order_acquire) != nullptr; }
  std::uint32_t LookupCount() const { return fLookupCount.load(std::memory_order_relaxed); }
  bool IsStoredInline() const { return fStorage.IsInline(); }
  std::uint64_t CapacityInBytes() const { return fStorage.Capacity(); }

private:
  friend struct VariantElement;
  friend class CVariantReader;

  // ---- storage. What changes a value goes through ResizeForNewValue, or grows the store and calls
  // FinishListChange.

  // Destroys the value and makes room for one of so many bytes; the caller fills it, and then sets
  // the type. False, and nothing done, while the variant is frozen.
  bool ResizeForNewValue(std::uint64_t size);
  // A larger store, in bytes, with the elements in it.
  template <class E>
  void GrowKeeping(std::uint64_t capacity);
  void DestroyElements();
  void DropCaches() {
    if (fIndex.load(std::memory_order_relaxed)) DeleteIndex();
    DropRegexHolder();
    fHash.store(0, std::memory_order_relaxed);
  }
  void DeleteIndex();
  void DropRegexHolder() {
    if (fRegexHolder.load(std::memory_order_relaxed)) DeleteRegexHolder();
  }
  void DeleteRegexHolder();

  // ---- regular expressions
  // Of a Regex or RegexList; built and published at the first call.
  const CRegexVectorHolder* RegexHolder() const;
  template <class Ask>
  std::int32_t AskHolder(const char* function, const char* onPosition, Ask ask) const;
  template <class E>
  typename E::Stored* Elements();
  template <class E>
  std::span<const typename E::Stored> Elements() const;
  template <class E>
  const typename E::Stored* Scalar() const;  // null when the store is empty
  template <class E>
  void SetElement(VariantType type, NewElement<E>& element);
  void SetNeutral(VariantType type);
  void CopyFrom(const CVariant& source);
  void TakeFrom(CVariant& source);
  // Exchanges values and indexes; the caller drops the caches of both sides.
  void Swap(CVariant& other);
  void ReadForeign(const IVariant& source, CForeignAllowance& allowance);
  void ReadThroughInterface(const IVariant& source, CForeignAllowance& allowance);
  void ReadMapThroughInterface(const IVariant& source, CForeignAllowance& allowance);
  void StoreMapValue(const CStringPtr& key, CUsePtr<CVariant> value);
  CStringPtr ScalarText() const;

  // ---- lists
  template <class Value>
  void AppendElement(Value value);
  template <class Value>
  void ReplaceElement(std::int64_t index, Value value, const char* objName);
  void FinishListChange();
  void AddVariant(const IVariant& value, const char* function, const char* onPosition);
  bool AddElementsOf(const CVariantReader& other);
  void AddJoined(const TNumber& value);
  void AddJoined(const CStringPtr& value) { AddToList(value.Get()); }
  void AddJoined(CVariant&& value);
  void AddJoined(std::int64_t value) { AddToList(value); }
  void AddJoined(double value) { AddToList(value); }
  void AddJoined(bool value) { AddToList(value); }
  template <class Value>
  bool ElementAs(std::int64_t index, Value& value) const;
  bool HasPosition(std::int64_t index) const;
  bool CanJoin(VariantType other) const;
  template <class E>
  bool CopyElement(const typename E::Stored& element, VariantType type);
  IVariant* NewElementCopy(std::int64_t index, bool& ok) const;
  template <class E>
  void EraseAlike(std::vector<typename E::Joined>& values);
  template <class E>
  static bool ReadJoined(const CVariantReader& other, std::vector<typename E::Joined>& elements);

  // ---- variants inside of variants, to any depth
  bool OwnsVariants() const;  // a list of variants or a map, though it may be empty
  void DestroyVariants();
  CVariant* DestroyFlatVariants();
  // Copies that lack their elements, and what these are copied from.
  using PendingCopies = std::vector<std::pair<CVariant*, const CVariant*>>;
  void CopyElements(const CVariant& source);
  void CopyLevel(const CVariant& source, PendingCopies& pending);
  void CopyVariants(const CVariant& source, PendingCopies& pending);
  void AppendFlatText(std::string_view separator, std::string& out) const;
  bool AreVariantsEqual(const CVariant& other) const;
  std::int32_t CompareVariants(const CVariant& other) const;

  // ---- comparison
  bool IsEqualTo(const CVariantReader& other) const;
  bool IsSameValue(const CVariant& other) const;
  bool AreElementsEqual(const CVariantReader& other) const;
  bool AreNumbersEqual(const CVariantReader& other) const;
  std::int32_t CompareTo(const CVariantReader& other) const;
  std::int32_t CompareLongs(const CVariantReader& other) const;
  std::int32_t CompareForeignVariants(const CVariantReader& other) const;
  std::int32_t CompareAddresses(const CVariantReader& other) const;
  template <class E, class Use>
  static bool WithElement(const CVariantReader& list, std::int64_t index, Use use);
  static bool ReadNumber(const CVariantReader& list, std::int64_t index, TNumber& number);
  std::int64_t FindContained(const CVariantReader& wanted) const;
  bool ContainsShare(const IVariant* other, Share share, IVariant* outElement) const;
  template <class Read>
  bool ContainsElements(const CVariantReader& other, Share share, IVariant* outElement,
                        Read read) const;
  void DeliverElement(std::int64_t position, IVariant* outElement) const;

  // ---- order and search
  template <class E>
  std::int64_t FindElement(std::int64_t start, const typename E::Stored& wanted) const;
  template <class E>
  std::int64_t FindCounted(std::int64_t start, const typename E::Stored& wanted) const;
  template <class E>
  void CountLookup() const;
  template <class E>
  void BuildIndex() const;
  std::int64_t FindJoined(std::int64_t start, const TNumber& value) const;
  std::int64_t FindJoined(std::int64_t start, const CStringPtr& value) const {
    return FindFrom(start, value.Get());
  }
  std::int64_t FindJoined(std::int64_t start, const CVariant& value) const {
    return FindFrom(start, &value);
  }
  std::int64_t FindJoined(std::int64_t start, std::uint8_t truth) const {
    return FindFrom(start, truth != 0);
  }
  std::int64_t FindJoined(std::int64_t start, auto value) const { return FindFrom(start, value); }

  // The value.
  qzvector<char> fStorage;  // one element of the type's kind, or as many as the list has
  // Caches, filled by readers. What is published is complete: release, and acquire to read.
  mutable std::atomic<std::uint64_t*> fIndex{nullptr};  // element numbers in ascending order
  mutable std::atomic<CRegexVectorHolder*> fRegexHolder{nullptr};
  mutable std::atomic<std::uint64_t> fHash{0};         // of the text form; 0 while not computed
  mutable std::atomic<std::uint32_t> fLookupCount{0};  // searches of a long list, up to 10
  // The value again.
  VariantType fType = VariantType::Empty;
  bool fSorted = false;  // the list is kept in order
  bool fFrozen = false;  // moved from: nothing changes the value any more
};
