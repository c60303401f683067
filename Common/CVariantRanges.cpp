// Words of addresses, and whether an address lies in a range.

#include <algorithm>

#include "Common/CVariant.h"
#include "Common/CVariantReader.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"

qxSource("Common\\CVariant");

namespace {

// An address as the accessors hand it out.
void HandOut(const AddressRecord& address, bool isIPv6, std::uint64_t& high, std::uint64_t& low) {
  high = isIPv6 ? address.fHigh : 0;
  low = isIPv6 ? address.fLow : static_cast<std::uint32_t>(address.fLow);
}

constexpr const char* kOperatorName = "operator 'is in range' of Variant";

}  // namespace

// ---- words

bool CVariant::GetIP(std::uint64_t* high, std::uint64_t* low, bool* isIPv6) const {
  if (!high || !low || !isIPv6) return false;
  if (fType != VariantType::IP || Addresses().empty()) return false;
  const AddressRecord& address = Addresses().front();
  *isIPv6 = address.fIsIPv6;
  HandOut(address, address.fIsIPv6, *high, *low);
  return true;
}

bool CVariant::GetIPRange(std::uint64_t* high1, std::uint64_t* low1, std::uint64_t* high2,
                          std::uint64_t* low2, bool* isIPv6) const {
  if (!high1 || !low1 || !high2 || !low2 || !isIPv6) return false;
  if (fType != VariantType::IPRange || Addresses().size() < 2) return false;
  // Contract: the low bound's family is taken for the range's.
  *isIPv6 = Addresses()[0].fIsIPv6;
  HandOut(Addresses()[0], *isIPv6, *high1, *low1);
  HandOut(Addresses()[1], *isIPv6, *high2, *low2);
  return true;
}

bool CVariant::GetIPListElem(std::int64_t index, std::uint64_t* high, std::uint64_t* low,
                             bool* isIPv6) const {
  if (!high || !low || !isIPv6) return false;
  if (fType != VariantType::IPList || !HasPosition(index)) return false;
  const AddressRecord& address = Addresses()[static_cast<std::size_t>(index)];
  *isIPv6 = address.fIsIPv6;
  HandOut(address, address.fIsIPv6, *high, *low);
  return true;
}

bool CVariant::GetIPRangeListElem(std::int64_t index, std::uint64_t* high1, std::uint64_t* low1,
                                  std::uint64_t* high2, std::uint64_t* low2, bool* isIPv6) const {
  if (fType != VariantType::IPRangeList || !HasPosition(index)) return false;
  const CVariant& range = Elements<VariantElement>()[static_cast<std::size_t>(index)];
  return range.GetIPRange(high1, low1, high2, low2, isIPv6);
}

// ---- in a range

// Contract: of two IPv6 addresses only the last 8 bytes are looked at, and every IPv4 address lies
// below every IPv6 one.
bool CVariant::IsInRange(const IVariant* other) const {
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::IsInRange",
             NotInitialized("CVariant: IsInRange", "right hand side of operator 'is in range'"));
    return false;
  }
  const CVariantReader range(*other);
  if (fType != VariantType::IP || range.Type() != VariantType::IPRange) {
    qxReport(ErrorId::ErrorDuringOperation, "CVariant::IsInRange",
             FailedOperation("CVariant: IsInRange", kOperatorName,
                             UnsupportedTypes(fType, range.Type())));
    return false;
  }
  const auto bounds = range.Bounds();
  if (!bounds || Addresses().empty()) return false;
  const AddressRecord& address = Addresses().front();
  return IsAddressLessOrEqual(bounds->fLow, address) &&
         IsAddressLessOrEqual(address, bounds->fHigh);
}

bool CVariant::IsInRangeList(const IVariant* other) const {
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::IsInRangeList",
             NotInitialized("CVariant: isInRangeList",
                            "right hand side of operator 'is in range list'"));
    return false;
  }
  const CVariantReader list(*other);
  if (fType != VariantType::IP || list.Type() != VariantType::IPRangeList) {
    qxReport(ErrorId::ErrorDuringOperation, "CVariant::IsInRangeList",
             FailedOperation("CVariant: isInRangeList", kOperatorName,
                             UnsupportedTypes(fType, list.Type())));
    return false;
  }
  const auto isInRange = [this](const CVariant& range) { return IsInRange(&range); };
  if (const CVariant* peer = list.Peer()) {
    const auto ranges = peer->Variants();
    return std::any_of(ranges.begin(), ranges.end(), isInRange);
  }
  const auto count = list.Count();
  for (std::int64_t i = 0; count && i < *count; ++i) {
    CVariant range;
    if (list.Read(i, range) && isInRange(range)) return true;
  }
  return false;
}
