#include "Common/CVariantReader.h"

#include "Common/CUnicodeString.h"

bool CVariantReader::Read(std::int64_t index, TNumber& number) const {
  bool ok = false;
  const CUsePtr<Selvane::IVariant> element(fSource.GetNumberListElem(index, ok));
  if (!ok || !element) return false;
  number = element->GetType() == VariantType::Double ? TNumber::Of(element->GetDouble())
                                                     : TNumber::Of(element->GetLong());
  return true;
}

bool CVariantReader::Read(std::int64_t index, CVariant& element) const {
  if (fPeer) return fPeer->ReadElement(index, element);
  bool ok = false;
  const CUsePtr<Selvane::IVariant> foreign(fSource.GetMixedListElem(index, ok));
  if (!ok || !foreign) return false;
  element.Assign(foreign.Get());
  return true;
}

std::optional<AddressBounds> CVariantReader::Bounds() const {
  if (fPeer) {
    const auto addresses = fPeer->Addresses();
    if (addresses.size() < 2) return std::nullopt;
    return AddressBounds{addresses[0], addresses[1]};
  }
  CStringPtr low, high;
  if (!Read(0, low) || !Read(1, high)) return std::nullopt;
  return AddressBounds{ParseAddress(Utf8Of(low.Get())), ParseAddress(Utf8Of(high.Get()))};
}

CStringPtr CVariantReader::Adopt(Selvane::IUnicodeString* owned) {
  const CUsePtr<Selvane::IUnicodeString> held(owned);
  return TextOf(owned);
}
