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

CStringPtr CVariantReader::Adopt(Selvane::IUnicodeString* owned) {
  const CUsePtr<Selvane::IUnicodeString> held(owned);
  return TextOf(owned);
}
