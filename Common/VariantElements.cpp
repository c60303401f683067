#include "Common/VariantElements.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"
#include "Common/CVariant.h"
#include "Common/EncodingRegistry.h"
#include "Common/Utf8.h"
#include "Libs/Platform/NetworkAddress.h"

namespace {

// Room for every number that is printed here: a sign and 20 digits, or what "%.6g" takes.
using Digits = std::array<char, 24>;

template <class... Arguments>
void PrintDigits(std::string& out, Arguments... arguments) {
  Digits digits;
  out.append(digits.data(),
             std::to_chars(digits.data(), digits.data() + digits.size(), arguments...).ptr);
}

// Beyond this, integers and doubles are not ordered together: neighbours are equal as doubles.
constexpr std::int64_t kLargestExactInteger = std::int64_t{1} << 53;

bool IsExactAsDouble(const TNumber& number) {
  if (number.IsDouble()) return !std::isnan(number.Double());
  return number.IsInteger() && number.Long() >= -kLargestExactInteger &&
         number.Long() <= kLargestExactInteger;
}

}  // namespace

AddressRecord ParseAddress(std::string_view text) {
  const std::string zeroTerminated(text);
  AddressRecord address{};
  if (text.find(':') != std::string_view::npos) {
    if (ParseIPv6Address(zeroTerminated.c_str(), address.fHigh, address.fLow)) {
      address.fIsIPv6 = true;
      return address;
    }
  } else if (std::uint32_t word; ParseIPv4Address(zeroTerminated.c_str(), word)) {
    address.fLow = word;
    return address;
  }
  // Contract: what cannot be parsed is not reported, and reads as 255.255.255.255.
  address.fLow = std::numeric_limits<std::uint32_t>::max();
  return address;
}

void PrintAddress(const AddressRecord& address, std::string& out) {
  if (address.fIsIPv6) {
    for (int group = 0; group < 8; ++group) {
      const std::uint64_t word = group < 4 ? address.fHigh : address.fLow;
      if (group) out += ':';
      PrintDigits(out, (word >> (48 - 16 * (group % 4))) & 0xFFFF, 16);
    }
    return;
  }
  for (int field = 0; field < 4; ++field) {
    if (field) out += '.';
    PrintDigits(out, (address.fLow >> (24 - 8 * field)) & 0xFF, 10);
  }
}

HostRecord ParseHost(const CStringImpl* text) {
  constexpr std::size_t kCertificateLength = 64;  // characters
  HostRecord record{};
  if (!text || text->Length() <= kCertificateLength) return record;
  const std::u32string_view wide = text->Wide();
  if (wide.size() <= kCertificateLength || wide[kCertificateLength] != U'|') return record;

  std::u32string_view host = wide.substr(kCertificateLength + 1);
  host.remove_prefix(std::min(host.find_first_not_of(U' '), host.size()));
  host = host.substr(0, host.find_last_not_of(U' ') + 1);
  CStringPtr certificateText = MakeText(Utf8FromWide(wide.substr(0, kCertificateLength)));
  CStringPtr hostText = MakeText(Utf8FromWide(host));
  CRegexPtr expression = CRegex::Create(Utf8Of(hostText.Get()), true);
  return {hostText.Detach(), expression.Detach(), certificateText.Detach()};
}

void PrintHost(const HostRecord& record, std::string& out) {
  out += Utf8Of(record.fCertificate);
  out += '|';
  out += Utf8Of(record.fHost);
}

bool HostMatches(const HostRecord& record, const CStringImpl* host) {
  if (!record.fHost || !record.fExpression || !host || host->IsEmpty()) return false;
  const bool isMultiByte = OutputBytesPerCharacter(host->Encoding()) > 1;
  try {
    return record.fExpression->Matches(isMultiByte ? host->Utf8() : host->Bytes());
  } catch (const CRegexException&) {  // it has logged itself
    return false;
  }
}

void PrintDouble(double value, std::string& out) {
  // The digits of an output stream in the classic locale: six that count.
  PrintDigits(out, value, std::chars_format::general, 6);
}

void PrintInteger(VariantType type, std::int64_t value, std::string& out) {
  const bool isHex = type == VariantType::Hex;
  PrintDigits(out, value, isHex ? 16 : 10);
}

bool DoubleElement::HasTotalOrder(std::span<const Stored> elements, VariantType) {
  return std::none_of(elements.begin(), elements.end(),
                      [](double element) { return std::isnan(element); });
}

bool NumberElement::HasTotalOrder(std::span<const Stored> elements, VariantType) {
  return std::all_of(elements.begin(), elements.end(),
                     [](const TNumber& number) { return number.IsInteger(); }) ||
         std::all_of(elements.begin(), elements.end(), IsExactAsDouble);
}

bool AddressElement::As(const Stored& element, CStringPtr& text) {
  std::string printed;
  PrintAddress(element, printed);
  text = MakeText(printed);
  return true;
}

void HostElement::Copy(Stored* to, const Stored& from) {
  if (from.fHost) from.fHost->AddRef();
  if (from.fExpression) from.fExpression->AddRef();
  if (from.fCertificate) from.fCertificate->AddRef();
  new (to) Stored(from);
}

void HostElement::Destroy(Stored& element) {
  if (element.fHost) element.fHost->Release();
  if (element.fExpression) element.fExpression->Release();
  if (element.fCertificate) element.fCertificate->Release();
}

bool HostElement::As(const Stored& element, CStringPtr& text) {
  std::string printed;
  PrintHost(element, printed);
  text = MakeText(printed);
  return true;
}

bool HostElement::IsLessOrEqual(const Stored& left, const Stored& right) {
  const int byCertificate = CompareHandles(left.fCertificate, right.fCertificate);
  if (byCertificate != 0) return byCertificate < 0;
  return CompareHandles(left.fHost, right.fHost) <= 0;
}

void VariantElement::Destroy(Stored& element) {
  element.~CVariant();
}

void VariantElement::Relocate(Stored* to, Stored& from) {
  new (to) CVariant(std::move(from));
  from.~CVariant();  // NOLINT(bugprone-use-after-move): it ends
}

void VariantElement::Swap(Stored& left, Stored& right) {
  left.Swap(right);
  left.DropCaches();
  right.DropCaches();
}

void VariantElement::Make(Stored* to, std::int64_t value) {
  new (to) CVariant(value);
}

void VariantElement::Make(Stored* to, double value) {
  new (to) CVariant(value);
}

void VariantElement::Make(Stored* to, bool value) {
  new (to) CVariant(value);
}

void VariantElement::Make(Stored* to, CStringImpl* text) {
  new (to) CVariant(text);
}

void VariantElement::Make(Stored* to, CVariant* value) {
  new (to) CVariant(std::move(*value));
}

bool VariantElement::As(const Stored& element, std::int64_t& value) {
  value = element.GetLong();
  return TypeFamily::IntegerScalars.Has(element.GetType());
}

bool VariantElement::As(const Stored& element, bool& value) {
  value = element.GetBool();
  return element.GetType() == VariantType::Boolean;
}

bool VariantElement::As(const Stored& element, CStringPtr& text) {
  if (!TypeFamily::StringScalars.Has(element.GetType())) return false;
  text = element.GetText();
  return true;
}

bool VariantElement::IsEqual(const Stored& left, const Stored& right) {
  return left.IsEqual(right);
}

bool VariantElement::IsLessOrEqual(const Stored& left, const Stored& right) {
  return left.Compare(right) <= 0;
}

bool VariantElement::HasTotalOrder(std::span<const Stored> elements, VariantType elementType) {
  return std::all_of(elements.begin(), elements.end(), [&](const CVariant& element) {
    if (element.GetType() != elementType) return false;
    return elementType != VariantType::IPRange || element.Addresses().size() == 2;
  });
}

void MapElement::Destroy(Stored& element) {
  delete element.fTree;
}

void MapElement::MakeNeutral(Stored* to) {
  new (to) MapHeader{new VariantMap, 0};
}
