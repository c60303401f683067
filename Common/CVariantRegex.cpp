#include "Common/CVariant.h"

// No holder is built yet, so there is none to delete.
void CVariant::DeleteRegexHolder() {}

bool CVariant::FindFirstMatching(const IVariant*, IVariant**, CRegex*) const {
  return false;
}

std::int64_t CVariant::FindExpression(Selvane::IUnicodeString*) const {
  return -1;
}

std::int32_t CVariant::Matches(Selvane::IUnicodeString*, Selvane::IUnicodeString*) const {
  return 0;
}

std::int32_t CVariant::Matches(std::string_view) const {
  return 0;
}

std::int32_t CVariant::TriggerRegexBuild() const {
  return 0;
}
