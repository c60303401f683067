#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "Common/CVariantTypeTable.h"
#include "Common/VariantTexts.h"
#include "tests/Common/QuestionedHost.h"

// What the tests of the variant share: short words for making values, and a host that keeps the
// reports.

using VariantPtr = CUsePtr<CVariant>;

// Every type of the table.
inline std::vector<VariantType> AllTypes() {
  std::vector<VariantType> types;
  for (const CVariantTypeInfo& row : kVariantTypeTable) types.push_back(row.fType);
  return types;
}

// What reports say of types.
inline std::string NameOf(VariantType type) {
  return TypeInfo(type).fName;
}

inline std::string FormatReport(const std::string& onPosition, const std::string& action,
                                VariantType type, const std::string& formatType) {
  return "'" + onPosition + "': '" + action + "' failed. Type of 'Variant' is '" + NameOf(type) +
         "', but it has to be '" + formatType + "'.";
}

inline std::string UnsupportedTypes(VariantType self, VariantType other) {
  return "Error: unsupported element-types. Type of this: " + NameOf(self) +
         ", type of parameter: " + NameOf(other);
}

inline std::string Utf8(const CStringPtr& text) {
  return std::string(Utf8Of(text.Get()));
}

// The text of an object that the caller owns; "(null)" for none.
inline std::string TakeUtf8(Selvane::IUnicodeString* owned) {
  const CUsePtr<Selvane::IUnicodeString> held(owned);
  return owned ? std::string(owned->GetUtf8()) : "(null)";
}

inline CVariant TextValue(VariantType type, std::string_view text) {
  CVariant value;
  value.SetString(type, MakeText(text).Get());
  return value;
}

inline CVariant Longs(const std::vector<std::int64_t>& values,
                      VariantType type = VariantType::LongList) {
  CVariant list(type);
  for (const std::int64_t value : values) list.AddToList(value);
  return list;
}

inline CVariant Doubles(const std::vector<double>& values) {
  CVariant list(VariantType::DoubleList);
  for (const double value : values) list.AddToList(value);
  return list;
}

inline CVariant Bools(const std::vector<bool>& values) {
  CVariant list(VariantType::BooleanList);
  for (const bool value : values) list.AddToList(value);
  return list;
}

inline CVariant Texts(const std::vector<std::string>& values,
                      VariantType type = VariantType::StringList) {
  CVariant list(type);
  for (const std::string& value : values) list.AddToList(MakeText(value).Get());
  return list;
}

// A list of whole variants.
inline CVariant Variants(const std::vector<CVariant>& values,
                         VariantType type = VariantType::MixedList) {
  CVariant list(type);
  for (const CVariant& value : values) list.AddToList(&value);
  return list;
}

inline std::vector<std::int64_t> LongsOf(const CVariant& list) {
  std::vector<std::int64_t> values;
  for (std::uint64_t i = 0; i < list.SizeOfList(); ++i) {
    bool ok = false;
    values.push_back(list.GetLongListElem(static_cast<std::int64_t>(i), ok));
  }
  return values;
}

inline std::vector<std::string> TextsOf(const CVariant& list) {
  std::vector<std::string> values;
  for (std::uint64_t i = 0; i < list.SizeOfList(); ++i) {
    bool ok = false;
    values.push_back(Utf8(list.GetTextListElem(static_cast<std::int64_t>(i), ok)));
  }
  return values;
}

// A text of that many characters for a host record: the certificate is 64 times its letter.
inline std::string HostText(char certificate, std::string_view host) {
  return std::string(64, certificate) + "|" + std::string(host);
}

// Some value of each type, never the neutral one.
inline CVariant SampleOf(VariantType type) {
  using enum VariantType;
  if (type == Double) return CVariant(2.5);
  if (type == Boolean) return CVariant(true);
  if (TypeFamily::IntegerScalars.Has(type)) return CVariant(type, 7);
  if (type == IP) return TextValue(type, "10.0.0.5");
  if (type == HostAndCertificate) return TextValue(type, HostText('c', "*.example.com"));
  if (TypeFamily::TextScalars.Has(type)) return TextValue(type, "text");
  if (type == DoubleList) return Doubles({1.5, 2.5});
  if (type == BooleanList) return Bools({true, false});
  if (type == NumberList) {
    CVariant list = Longs({3, 4}, type);
    list.AddToList(4.5);
    return list;
  }
  if (TypeFamily::AddressLists.Has(type)) return Texts({"10.0.0.1", "10.0.0.9"}, type);
  if (type == HostAndCertificateList) {
    return Texts({HostText('a', "a.example"), HostText('b', "*.b.example")}, type);
  }
  if (TypeFamily::StringLists.Has(type)) return Texts({"one", "two", "three"}, type);
  if (type == MixedList) return Variants({CVariant(std::int64_t{1}), TextValue(String, "two")});
  if (type == DimensionList) return Variants({Longs({640, 480}, Dimension)}, type);
  if (type == IPRangeList) return Variants({SampleOf(IPRange)}, type);
  if (type == Map) {
    CVariant map(Map);
    map.SetMapValue(MakeText("b"), std::int64_t{2});
    map.SetMapValue(MakeText("a"), std::int64_t{1});
    return map;
  }
  if (TypeInfo(type).fIsList) return Longs({5, 6}, type);
  return CVariant(type);
}

// Reports that reached the debug log while it stands.
class Reports {
public:
  // The messages since the last call.
  std::vector<std::string> Take() {
    std::vector<std::string> messages;
    for (const PrintedLine& line : fHost->fPrinted) messages.push_back(line.message);
    fHost->fPrinted.clear();
    fHost->fQuestions.clear();
    return messages;
  }
  QuestionedHost& Host() { return *fHost.Get(); }

private:
  InSlot<QuestionedHost> fHost{Gates{}};
};
