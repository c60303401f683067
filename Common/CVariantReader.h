#pragma once

#include <cstdint>
#include <optional>

#include "Common/CRefVariant.h"
#include "Common/CUseCounted.h"
#include "Common/CVariant.h"
#include "Common/SelvaneIVariant.h"
#include "Common/VariantElements.h"
#include "Common/VariantTexts.h"
#include "Common/VariantType.h"

// The CVariant behind an interface, or null when it is of another implementation.
inline const CVariant* PeerOf(const Selvane::IVariant* variant) {
  if (variant->GetImplementationId() != CVariant::kImplementationId) return nullptr;
  return static_cast<const CVariant*>(variant);
}

// List types whose elements can be read as a value of type T.
template <class T>
inline constexpr VariantTypeSet kReadableAs{};
template <>
inline constexpr VariantTypeSet kReadableAs<std::int64_t> =
    TypeFamily::IntegerLists |
    VariantTypeSet{VariantType::Dimension, VariantType::MixedList, VariantType::NumberList};
template <>
inline constexpr VariantTypeSet kReadableAs<double>{VariantType::DoubleList,
                                                    VariantType::NumberList};
template <>
inline constexpr VariantTypeSet kReadableAs<bool>{VariantType::BooleanList, VariantType::MixedList};
template <>
inline constexpr VariantTypeSet kReadableAs<TNumber>{VariantType::NumberList};
template <>
inline constexpr VariantTypeSet kReadableAs<CStringPtr> =
    TypeFamily::StringLists | TypeFamily::AddressLists |
    VariantTypeSet{VariantType::IPRangeList, VariantType::HostAndCertificateList,
                   VariantType::MixedList};
template <>
inline constexpr VariantTypeSet kReadableAs<CVariant> =
    TypeFamily::NumberLists | TypeFamily::StringLists | TypeFamily::VariantLists |
    VariantTypeSet{VariantType::IPList, VariantType::HostAndCertificateList,
                   VariantType::BooleanList};

// The ends of a range of addresses.
struct AddressBounds {
  AddressRecord fLow;
  AddressRecord fHigh;
};

// How much of one foreign value is read. Nothing keeps such a value from claiming any size, or from
// containing itself. What is too much is reported once.
class CForeignAllowance {
public:
  // So many elements of a list, or entries of a map; false when there is no room for them.
  bool TakeElements(VariantType type, std::uint64_t count);
  // One list or map more inside the one that is being read; false when that is too deep.
  bool EnterLevel();
  void LeaveLevel() { ++fLevels; }

private:
  bool Refuse(const char* reason);

  std::uint64_t fBytes = std::uint64_t{1} << 27;  // of all elements in the value together
  std::uint32_t fLevels = 64;                     // reading goes down by recursion
  bool fHasReported = false;
};

// Reads the argument of an operation, whoever implements it: a CVariant directly, anything else
// through its interface, of which it holds a reference meanwhile. What an operation does with the
// argument is thus written once.
//
// A foreign implementation is believed in nothing that could hurt: it is read within an allowance,
// and a missing object counts as no value. A view is believed, for there is a CVariant behind it.
class CVariantReader {
public:
  explicit CVariantReader(const Selvane::IVariant& source)
      : CVariantReader(source, fOwnAllowance) {}
  // Of a value that was found inside of another foreign one, which has the allowance.
  CVariantReader(const Selvane::IVariant& source, CForeignAllowance& allowance)
      : fSource(source), fPeer(PeerOf(&source)), fAllowance(allowance) {
    if (!fPeer) fHeld = ShareUse(&source);
  }
  CVariantReader(const CVariantReader&) = delete;
  CVariantReader& operator=(const CVariantReader&) = delete;

  const CVariant* Peer() const { return fPeer; }
  const Selvane::IVariant& Source() const { return fSource; }
  VariantType Type() const { return fSource.GetType(); }

  CStringPtr Text() const { return fPeer ? fPeer->GetText() : Adopt(fSource.GetString()); }

  // What the value says of itself.
  std::uint64_t Size() const { return fPeer ? fPeer->SizeOfList() : fSource.GetListSize(); }
  // How many elements to go through; none, and a report, where the size cannot be true. To be asked
  // once, for it takes them from the allowance.
  std::optional<std::int64_t> Count() const;

  // One element, as far as it can be read as such a value.
  bool Read(std::int64_t index, std::int64_t& value) const {
    bool ok = false;
    value = fSource.GetLongListElem(index, ok);
    return ok;
  }
  bool Read(std::int64_t index, double& value) const {
    bool ok = false;
    value = fSource.GetDoubleListElem(index, ok);
    return ok;
  }
  bool Read(std::int64_t index, bool& value) const {
    bool ok = false;
    value = fSource.GetBoolListElem(index, ok);
    return ok;
  }
  bool Read(std::int64_t index, CStringPtr& text) const {
    bool ok = false;
    text = fPeer ? fPeer->GetTextListElem(index, ok) : Adopt(fSource.GetStringListElem(index, ok));
    return ok;
  }
  bool Read(std::int64_t index, TNumber& number) const;
  bool Read(std::int64_t index, CVariant& element) const;  // into an Empty one
  // The first two addresses of an IPRange; nothing when there are fewer.
  std::optional<AddressBounds> Bounds() const;

private:
  static CStringPtr Adopt(Selvane::IUnicodeString* owned);

  const Selvane::IVariant& fSource;
  const CVariant* fPeer;  // fSource as what it is, or null
  CUsePtr<const Selvane::IVariant> fHeld;
  CForeignAllowance fOwnAllowance;
  CForeignAllowance& fAllowance;  // fOwnAllowance, or that of the value around this one
};
