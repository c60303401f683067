#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Common/CUseCounted.h"
#include "Common/SelvaneIVariant.h"
#include "Common/VariantTexts.h"
#include "Common/VariantType.h"
#include "Libs/Platform/Prefetch.h"

class CRegex;
class CVariant;

// What a CVariant's store is made of, and how each kind of it behaves.
//
// Every value is an array of elements of one kind: a list has as many as it has, a scalar has one.
// A kind is described once, by a struct below, and every operation that walks over elements is
// written once, as a template over these structs, and reached by VisitElements. A struct says
//
//   Stored         what lies in the store; kMovesAsBytes tells whether it may be moved as bytes
//   Copy, Destroy  construction from another element in raw memory, and the end of one
//   Make           construction in raw memory from what a caller adds; for each kind of argument
//                  that it takes
//   As             reading as a long, a double, a truth value or a text: true when there was one
//   Joined         what an element travels as from list to list
//   IsEqual        equality as searches mean it
//   IsLessOrEqual  order as sorting means it; kOrder tells what sorting may rely on
//   Print          the text form, appended in UTF-8
//
// The kinds that hold variants have neither Copy nor Print: nesting is CVariant's business.
//
// The structs know nothing of which list types an operation accepts: that is data of the operation.

// ---- what is stored

// A number in a list whose elements have a type each.
struct TNumber {
  VariantType fType;  // one of the number types
  std::uint64_t fBits;

  static TNumber Of(std::int64_t value) {
    return {VariantType::Long, std::bit_cast<std::uint64_t>(value)};
  }
  static TNumber Of(double value) {
    return {VariantType::Double, std::bit_cast<std::uint64_t>(value)};
  }

  bool IsDouble() const { return fType == VariantType::Double; }
  bool IsInteger() const { return TypeFamily::IntegerScalars.Has(fType); }
  std::int64_t Long() const { return std::bit_cast<std::int64_t>(fBits); }
  // An integer is converted.
  double Double() const {
    return IsDouble() ? std::bit_cast<double>(fBits) : static_cast<double>(Long());
  }
};

// A network address. IPv4 has its word in host byte order in the lower half of fLow; fHigh is not
// read then. IPv6 is one big-endian number of two words.
struct AddressRecord {
  bool fIsIPv6;
  std::uint64_t fLow;
  std::uint64_t fHigh;
};

// A host name with wild cards and the certificate that belongs to it; owns a reference on each.
struct HostRecord {
  CStringImpl* fHost;
  CRegex* fExpression;  // compiled from the host; null where that failed, and in an empty record
  CStringImpl* fCertificate;
};

struct TextLess {
  bool operator()(const CStringPtr& left, const CStringPtr& right) const {
    return CompareHandles(left.Get(), right.Get()) < 0;
  }
};
// The values are variants of the map's own; who asks for one gets a reference on it.
using VariantMap = std::map<CStringPtr, CUsePtr<CVariant>, TextLess>;

// The tree lies outside of the store, for a tree cannot be moved as bytes.
struct MapHeader {
  VariantMap* fTree;
  std::uint64_t fCount;  // entries of the tree
};

// Whatever a store of eight inline bytes holds can be moved as bytes; blocks of these are too.
static_assert(std::is_trivially_copyable_v<TNumber> && sizeof(TNumber) == 16);
static_assert(std::is_trivially_copyable_v<AddressRecord> && sizeof(AddressRecord) == 24);
static_assert(std::is_trivially_copyable_v<HostRecord> && sizeof(HostRecord) == 3 * sizeof(void*));
static_assert(std::is_trivially_copyable_v<MapHeader> && sizeof(MapHeader) == 16);

// ---- their texts

// IPv6 if the text has a colon. What is no address gives the IPv4 address 255.255.255.255.
AddressRecord ParseAddress(std::string_view text);
void PrintAddress(const AddressRecord& address, std::string& out);

// "CERTIFICATE|HOST", with a certificate of exactly 64 characters; any other text gives an empty
// record. Owns its three references.
HostRecord ParseHost(const CStringImpl* text);
void PrintHost(const HostRecord& record, std::string& out);
// Whether the record's expression matches the whole host name; never when one of the two is empty.
bool HostMatches(const HostRecord& record, const CStringImpl* host);

void PrintDouble(double value, std::string& out);
// Hex in lower-case hexadecimal, every other integer type in decimal.
void PrintInteger(VariantType type, std::int64_t value, std::string& out);

// ---- order

// What sorting may rely on for elements that compare as equal.
enum class ElementOrder {
  EqualsAreAlike,    // nobody can tell them apart: any algorithm gives the one result
  EqualsMayDiffer,   // they can differ in their bytes; AreAlike tells
  EqualsAreUnknown,  // only the algorithm of the contract puts them where they belong
};

// IPv4 before IPv6. Contract: of two IPv6 addresses the low words alone decide.
inline bool IsAddressLessOrEqual(const AddressRecord& left, const AddressRecord& right) {
  if (left.fIsIPv6 != right.fIsIPv6) return right.fIsIPv6;
  if (left.fIsIPv6) return left.fLow <= right.fLow;
  return static_cast<std::uint32_t>(left.fLow) <= static_cast<std::uint32_t>(right.fLow);
}

// The same family and address; the high word counts for IPv6 alone.
inline bool IsAddressEqual(const AddressRecord& left, const AddressRecord& right) {
  if (left.fIsIPv6 != right.fIsIPv6) return false;
  if (left.fIsIPv6) return left.fLow == right.fLow && left.fHigh == right.fHigh;
  return static_cast<std::uint32_t>(left.fLow) == static_cast<std::uint32_t>(right.fLow);
}

// ---- the kinds

// Base of the kinds whose elements own nothing.
template <class T>
struct PlainElement {
  using Stored = T;
  static constexpr bool kMovesAsBytes = true;
  static constexpr bool kOwnsObjects = false;

  static void Copy(T* to, const T& from) { new (to) T(from); }
  static void Destroy(T&) {}
};

struct LongElement : PlainElement<std::int64_t> {
  using Joined = std::int64_t;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsAreAlike;

  static void Make(Stored* to, std::int64_t value) { new (to) Stored(value); }
  static bool As(Stored element, std::int64_t& value) {
    value = element;
    return true;
  }
  static bool IsEqual(Stored left, Stored right) { return left == right; }
  static bool IsLessOrEqual(Stored left, Stored right) { return left <= right; }
  static void Print(Stored element, VariantType type, std::string& out) {
    PrintInteger(type, element, out);
  }
};

struct DoubleElement : PlainElement<double> {
  using Joined = double;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsMayDiffer;

  static void Make(Stored* to, double value) { new (to) Stored(value); }
  static bool As(Stored element, double& value) {
    value = element;
    return true;
  }
  static bool IsEqual(Stored left, Stored right) { return left == right; }
  static bool IsLessOrEqual(Stored left, Stored right) { return left <= right; }
  static bool AreAlike(Stored left, Stored right) {  // the two zeros are not
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
  }
  static bool HasTotalOrder(std::span<const Stored> elements, VariantType type);
  static void Print(Stored element, VariantType, std::string& out) { PrintDouble(element, out); }
};

struct BoolElement : PlainElement<std::uint8_t> {
  using Joined = bool;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsAreAlike;

  static void Make(Stored* to, bool value) { new (to) Stored(value ? 1 : 0); }
  static bool As(Stored element, bool& value) {
    value = element != 0;
    return true;
  }
  static bool IsEqual(Stored left, Stored right) { return left == right; }
  static bool IsLessOrEqual(Stored left, Stored right) { return left <= right; }
  static void Print(Stored element, VariantType, std::string& out) {
    out += element ? "true" : "false";
  }
};

struct NumberElement : PlainElement<TNumber> {
  using Joined = TNumber;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsMayDiffer;

  static void Make(Stored* to, std::int64_t value) { new (to) Stored(TNumber::Of(value)); }
  static void Make(Stored* to, double value) { new (to) Stored(TNumber::Of(value)); }
  // Contract: of the integer types only a Long is read as one.
  static bool As(const Stored& element, std::int64_t& value) {
    if (element.fType != VariantType::Long) return false;
    value = element.Long();
    return true;
  }
  static bool As(const Stored& element, double& value) {
    if (!element.IsDouble() && !element.IsInteger()) return false;
    value = element.Double();
    return true;
  }
  // Two integers as such, else as doubles.
  static bool IsEqual(const Stored& left, const Stored& right) {
    if (!left.IsDouble() && !right.IsDouble()) return left.Long() == right.Long();
    return left.Double() == right.Double();
  }
  // Contract: what is no number is never less or equal, not even to itself.
  static bool IsLessOrEqual(const Stored& left, const Stored& right) {
    if (left.IsInteger() && right.IsInteger()) return left.Long() <= right.Long();
    if (!TypeFamily::Numbers.Has(left.fType) || !TypeFamily::Numbers.Has(right.fType)) return false;
    return left.Double() <= right.Double();
  }
  static bool AreAlike(const Stored& left, const Stored& right) {
    return left.fType == right.fType && left.fBits == right.fBits;
  }
  static bool HasTotalOrder(std::span<const Stored> elements, VariantType type);
  static void Print(const Stored& element, VariantType, std::string& out) {
    if (element.IsDouble()) {
      PrintDouble(element.Double(), out);
    } else {
      PrintInteger(element.fType, element.Long(), out);
    }
  }
};

struct TextElement {
  using Stored = CStringImpl*;  // owns a reference; null for the empty text
  using Joined = CStringPtr;
  static constexpr bool kMovesAsBytes = true;
  static constexpr bool kOwnsObjects = true;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsAreAlike;

  static void Copy(Stored* to, CStringImpl* from) {
    if (from) from->AddRef();
    new (to) Stored(from);
  }
  static void Destroy(Stored element) {
    if (element) element->Release();
  }
  static void Make(Stored* to, CStringImpl* text) { Copy(to, text); }
  static bool As(CStringImpl* element, CStringPtr& text) {
    text = ShareUse(element);
    return true;
  }
  static bool IsEqual(const CStringImpl* left, const CStringImpl* right) {
    return CompareHandles(left, right) == 0;
  }
  static bool IsLessOrEqual(const CStringImpl* left, const CStringImpl* right) {
    return CompareHandles(left, right) <= 0;
  }
  static void Print(const CStringImpl* element, VariantType, std::string& out) {
    out += Utf8Of(element);
  }
  // What a comparison will read: the object, with the bytes of a short text in it.
  static void Prefetch(const CStringImpl* element) {
    constexpr std::size_t kCacheLine = 64;
    if (!element) return;
    const char* const object = reinterpret_cast<const char*>(element);
    PrefetchForRead(object);
    PrefetchForRead(object + kCacheLine);
  }
};

struct AddressElement : PlainElement<AddressRecord> {
  using Joined = CStringPtr;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsMayDiffer;

  static void Make(Stored* to, CStringImpl* text) { new (to) Stored(ParseAddress(Utf8Of(text))); }
  static bool As(const Stored& element, CStringPtr& text);
  static bool IsEqual(const Stored& left, const Stored& right) {
    return IsAddressEqual(left, right);
  }
  static bool IsLessOrEqual(const Stored& left, const Stored& right) {
    return IsAddressLessOrEqual(left, right);
  }
  static bool AreAlike(const Stored& left, const Stored& right) {
    return IsAddressEqual(left, right);
  }
  static bool HasTotalOrder(std::span<const Stored>, VariantType) { return true; }
  static void Print(const Stored& element, VariantType, std::string& out) {
    PrintAddress(element, out);
  }
  static void Prefetch(const Stored& element) { PrefetchForRead(&element); }
};

struct HostElement {
  using Stored = HostRecord;
  using Joined = CVariant;
  static constexpr bool kMovesAsBytes = true;
  static constexpr bool kOwnsObjects = true;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsMayDiffer;

  static void Copy(Stored* to, const Stored& from);
  static void Destroy(Stored& element);
  static void Make(Stored* to, CStringImpl* text) { new (to) Stored(ParseHost(text)); }
  static bool As(const Stored& element, CStringPtr& text);
  // Contract: lopsided. The left record's expression is matched against the right record's host.
  static bool IsEqual(const Stored& left, const Stored& right) {
    return HostMatches(left, right.fHost);
  }
  // By the certificates, then by the hosts, as texts.
  static bool IsLessOrEqual(const Stored& left, const Stored& right);
  static bool AreAlike(const Stored& left, const Stored& right) {  // the same objects
    return left.fHost == right.fHost && left.fExpression == right.fExpression &&
           left.fCertificate == right.fCertificate;
  }
  static bool HasTotalOrder(std::span<const Stored>, VariantType) { return true; }
  static void Print(const Stored& element, VariantType, std::string& out) {
    PrintHost(element, out);
  }
};

// A whole variant as an element. Its use count stays 1 and is the list's: nobody keeps a reference
// to it beyond a change of the list.
struct VariantElement {
  using Stored = CVariant;
  using Joined = CVariant;
  static constexpr bool kMovesAsBytes = false;
  static constexpr bool kOwnsObjects = true;
  static constexpr ElementOrder kOrder = ElementOrder::EqualsAreUnknown;

  static void Destroy(Stored& element);
  static void Relocate(Stored* to, Stored& from);  // from ends
  static void Swap(Stored& left, Stored& right);
  static void Make(Stored* to, std::int64_t value);
  static void Make(Stored* to, double value);
  static void Make(Stored* to, bool value);
  static void Make(Stored* to, CStringImpl* text);
  // Takes the value out of what is handed in.
  static void Make(Stored* to, CVariant* value);
  // Contract: an element that is no integer is reported, as GetLong reports it.
  static bool As(const Stored& element, std::int64_t& value);
  static bool As(const Stored& element, bool& value);
  static bool As(const Stored& element, CStringPtr& text);  // of a string scalar
  static bool IsEqual(const Stored& left, const Stored& right);
  static bool IsLessOrEqual(const Stored& left, const Stored& right);
  // Of elements that all are what the list's type says, whole ranges included.
  static bool HasTotalOrder(std::span<const Stored> elements, VariantType elementType);
};

// The one element of a Map; never an element of a list.
struct MapElement {
  using Stored = MapHeader;
  static constexpr bool kMovesAsBytes = true;
  static constexpr bool kOwnsObjects = true;

  static void Destroy(Stored& element);
  static void MakeNeutral(Stored* to);  // an empty tree
};

// The element that an Empty value does not have.
struct NoElement : PlainElement<std::byte> {};

// ---- from a kind known at run time to its struct

enum class ElementKind : std::uint8_t {
  None,
  Long,
  Double,
  Boolean,
  Number,
  Text,
  Address,
  Host,
  Variant,
  Map
};

// Calls visit with the struct of the kind. The one place in which the kinds are told apart.
template <class Visit>
constexpr decltype(auto) VisitElements(ElementKind kind, Visit&& visit) {
  switch (kind) {
    case ElementKind::Long:
      return visit(LongElement{});
    case ElementKind::Double:
      return visit(DoubleElement{});
    case ElementKind::Boolean:
      return visit(BoolElement{});
    case ElementKind::Number:
      return visit(NumberElement{});
    case ElementKind::Text:
      return visit(TextElement{});
    case ElementKind::Address:
      return visit(AddressElement{});
    case ElementKind::Host:
      return visit(HostElement{});
    case ElementKind::Variant:
      return visit(VariantElement{});
    case ElementKind::Map:
      return visit(MapElement{});
    case ElementKind::None:
      break;
  }
  return visit(NoElement{});
}

// Whether elements of a kind can be made from such an argument, or read as one. The braces keep a
// double from passing as a long, and a pointer as a truth value.
template <class E, class Value>
concept CanMake = requires(typename E::Stored* to, Value value) {
  E::Make(to, {value});
};
template <class E, class Value>
concept CanReadAs = requires(const typename E::Stored& element, Value& value) {
  E::As(element, value);
};
// Whether there are lists of the kind: not of maps, and not of nothing.
template <class E>
concept IsListElement = requires {
  E::kOrder;
};

// Moves one element into raw memory; what it leaves is raw.
template <class E>
void RelocateElement(typename E::Stored* to, typename E::Stored& from) {
  if constexpr (E::kMovesAsBytes) {
    std::memcpy(static_cast<void*>(to), &from, sizeof from);
  } else {
    E::Relocate(to, from);
  }
}

// Moves a row of elements into raw memory, which may overlap the row from below.
template <class E>
void RelocateElements(typename E::Stored* to, typename E::Stored* from, std::uint64_t count) {
  if constexpr (E::kMovesAsBytes) {
    if (count) std::memmove(static_cast<void*>(to), from, count * sizeof *from);
  } else {
    for (std::uint64_t i = 0; i < count; ++i) E::Relocate(to + i, from[i]);
  }
}

template <class E>
void SwapElements(typename E::Stored& left, typename E::Stored& right) {
  if constexpr (E::kMovesAsBytes) {
    std::swap(left, right);
  } else {
    E::Swap(left, right);
  }
}

// An element on its way into a store. It is made before anything changes, for making may fail, and
// may read what the change is about to destroy.
template <class E>
class NewElement {
public:
  NewElement() {  // the type's neutral content
    if constexpr (requires { E::MakeNeutral(Get()); }) {
      E::MakeNeutral(Get());
    } else {
      new (Get()) typename E::Stored{};
    }
  }
  template <class Value>
  explicit NewElement(Value value) {
    E::Make(Get(), {value});
  }
  NewElement(const NewElement&) = delete;
  NewElement& operator=(const NewElement&) = delete;
  ~NewElement() {
    if (!fIsGone) E::Destroy(*Get());
  }

  // Into raw memory.
  void MoveTo(typename E::Stored* to) {
    RelocateElement<E>(to, *Get());
    fIsGone = true;
  }

private:
  typename E::Stored* Get() { return reinterpret_cast<typename E::Stored*>(fBytes); }

  alignas(typename E::Stored) std::byte fBytes[sizeof(typename E::Stored)];
  bool fIsGone = false;
};
