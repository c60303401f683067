#include "Common/CVariant.h"

bool CVariant::GetIP(std::uint64_t*, std::uint64_t*, bool*) const {
  return false;
}

bool CVariant::GetIPRange(std::uint64_t*, std::uint64_t*, std::uint64_t*, std::uint64_t*,
                          bool*) const {
  return false;
}

bool CVariant::GetIPListElem(std::int64_t, std::uint64_t*, std::uint64_t*, bool*) const {
  return false;
}

bool CVariant::GetIPRangeListElem(std::int64_t, std::uint64_t*, std::uint64_t*, std::uint64_t*,
                                  std::uint64_t*, bool*) const {
  return false;
}

bool CVariant::IsInRange(const IVariant*) const {
  return false;
}

bool CVariant::IsInRangeList(const IVariant*) const {
  return false;
}
