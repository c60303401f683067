#include "Common/CVariant.h"
#include "Common/CVariantTypeTable.h"

const char* GetTypeName(VariantType type) {
  return IsKnownType(type) ? TypeInfo(type).fName : nullptr;
}

Selvane::IUnicodeString* CVariant::ToString(Selvane::IUnicodeString*) const {
  return NewUnicodeString(ToText(nullptr));
}

CStringPtr CVariant::ToText(const CStringPtr& separator) const {
  std::string text;
  AppendText(Utf8Of(separator.Get()), text);
  return MakeText(text);
}

void CVariant::AppendText(std::string_view, std::string& out) const {
  if (TypeFamily::TextScalars.Has(fType)) out += Utf8Of(GetText().Get());
}

std::uint64_t CVariant::GetHash() const {
  return fHash.load(std::memory_order_relaxed);
}
