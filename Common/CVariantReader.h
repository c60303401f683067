#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

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

// Reads the argument of an operation, whoever implements it: a CVariant directly, anything else
// through its interface, of which it holds a reference meanwhile. What an operation does with the
// argument is thus written once.
//
// A foreign implementation is believed in nothing that could hurt: a size that no position reaches
// counts as 0, and a missing object as no value.
class CVariantReader {
public:
  explicit CVariantReader(const Selvane::IVariant& source)
      : fSource(source), fPeer(PeerOf(&source)) {
    if (!fPeer) fHeld = ShareUse(&source);
  }

  const CVariant* Peer() const { return fPeer; }
  const Selvane::IVariant& Source() const { return fSource; }
  VariantType Type() const { return fSource.GetType(); }

  CStringPtr Text() const { return fPeer ? fPeer->GetText() : Adopt(fSource.GetString()); }

  std::uint64_t Size() const {
    if (fPeer) return fPeer->SizeOfList();
    const std::uint64_t size = fSource.GetListSize();
    return size > std::numeric_limits<std::int64_t>::max() ? 0 : size;
  }

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
};
