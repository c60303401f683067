#include "Common/CRefVariant.h"

void CRefVariant::Assign(const IVariant*) {}

Selvane::IVariant* CRefVariant::Clone() const {
  return nullptr;
}
