#include "Common/CVariantReader.h"

#include <utility>

#include "Common/CUnicodeString.h"
#include "Common/CVariantReports.h"

qxSource("Common\\CVariant");

bool CForeignAllowance::TakeElements(VariantType type, std::uint64_t count) {
  const bool isList = IsKnownType(type) && TypeInfo(type).fIsList;
  const std::uint64_t size = isList ? TypeInfo(type).fElementSize : sizeof(CVariant);
  if (count > fBytes / size) return Refuse("Error: it claims more elements than it may have.");
  fBytes -= count * size;
  return true;
}

bool CForeignAllowance::EnterLevel() {
  if (fLevels == 0) return Refuse("Error: its lists and maps are nested too deep.");
  --fLevels;
  return true;
}

bool CForeignAllowance::Refuse(const char* reason) {
  if (!std::exchange(fHasReported, true)) {
    qxReport(ErrorId::GenericCVariantError, "CVariant::Assign",
             {{"onPosition", "CVariant: reading another implementation"}, {"reason", reason}});
  }
  return false;
}

std::optional<std::int64_t> CVariantReader::Count() const {
  const std::uint64_t size = Size();
  const bool isBelieved = fPeer || fSource.GetImplementationId() == CRefVariant::kImplementationId;
  if (!isBelieved && !fAllowance.TakeElements(Type(), size)) return std::nullopt;
  return static_cast<std::int64_t>(size);
}

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
  element.ReadForeign(*foreign, fAllowance);
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
