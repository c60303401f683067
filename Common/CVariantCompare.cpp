#include "Common/CVariant.h"

bool CVariant::IsEqual(const IVariant* other) const {
  return other == this;
}

bool CVariant::IsEqual(const CVariant& other) const {
  return &other == this;
}

std::int32_t CVariant::Compare(const IVariant*) const {
  return 0;
}

std::int32_t CVariant::Compare(const CVariant&) const {
  return 0;
}

bool CVariant::Contains(const IVariant*, IVariant*) const {
  return false;
}

bool CVariant::ContainsAll(const IVariant*, IVariant*) const {
  return false;
}

bool CVariant::ContainsAtLeastOne(const IVariant*, IVariant*) const {
  return false;
}

CRefVariant* CVariant::GetMixedListElemRef(std::int64_t, bool& ok) const {
  ok = false;
  return nullptr;
}
