// Names of types, text forms of values, and the hash of a text form.

#include <array>
#include <string>
#include <string_view>

#include "Common/CVariant.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"
#include "Common/Lookup3.h"

qxSource("Common\\CVariant");

namespace {

struct FamilyName {
  std::string_view fWord;  // none for a type that belongs to no family
  bool fIsList;
};

// By type.
constexpr std::array<FamilyName, kVariantTypeCount> kFamilyNames{{
    {"", false},              // Empty
    {"number", false},        // Double
    {"number", false},        // Long
    {"string", false},        // String
    {"boolean", false},       // Boolean
    {"number", true},         // LongList
    {"number", true},         // DoubleList
    {"string", true},         // StringList
    {"boolean", true},        // BooleanList
    {"", true},               // MixedList
    {"number", true},         // NumberList
    {"dimension", false},     // Dimension
    {"dimension", true},      // DimensionList
    {"ip", false},            // IP
    {"ip", true},             // IPList
    {"iprange", false},       // IPRange
    {"iprange", true},        // IPRangeList
    {"category", false},      // Category
    {"regex", false},         // Regex
    {"hex", false},           // Hex
    {"category", true},       // CategoryList
    {"regex", true},          // RegexList
    {"hex", true},            // HexList
    {"mediatype", false},     // MediaType
    {"mediatypelist", true},  // MediaTypeList. Contract: this word and SSOConnectorList's say list
    {"", false},              // HostAndCertificate
    {"", false},              // HostAndCertificateList
    {"dlpcategory", false},   // DLPCategory
    {"dlpcategory", true},    // DLPCategoryList
    {"", false},              // Map
    {"ssoconnector", false},  // SSOConnector
    {"ssoconnectorlist", true},  // SSOConnectorList
}};

// Those of every hash that is stored or exchanged.
constexpr std::uint32_t kHashSeedC = 0x12459878, kHashSeedB = 0x34464564;
constexpr std::size_t kHashTextReserve = 1024;  // bytes beyond the sum of the elements

std::uint64_t HashOf(std::string_view text) {
  return text.empty() ? 0 : Lookup3(text, kHashSeedC, kHashSeedB);
}

// "640x480", from the first two of the numbers; no text without two.
void PrintDimension(std::span<const std::int64_t> numbers, std::string& out) {
  if (numbers.size() < 2) return;
  PrintInteger(VariantType::Long, numbers[0], out);
  out += 'x';
  PrintInteger(VariantType::Long, numbers[1], out);
}

// The elements of a list with separators between them, or the one of a scalar.
template <class E>
void PrintElements(std::span<const typename E::Stored> elements, VariantType type,
                   std::string_view separator, std::string& out) {
  bool isFirst = true;
  for (const auto& element : elements) {
    if (!isFirst) out += separator;
    isFirst = false;
    E::Print(element, type, out);
  }
}

// The two bounds; no text without both. What was added beyond them is no part of the range.
void PrintRange(std::span<const AddressRecord> addresses, std::string_view separator,
                std::string& out) {
  if (addresses.size() < 2) return;
  PrintElements<AddressElement>(addresses.first(2), VariantType::IP, separator, out);
}

}  // namespace

const char* GetTypeName(VariantType type) {
  if (!IsKnownType(type)) {
    qxReport(ErrorId::UnknownTypeId, "CVariant::GetTypeName",
             {{"typeId", static_cast<std::uint32_t>(type)},
              {"onPosition", "CVariant: GetTypeName"},
              {"objName", "Variant"},
              {"reason", "Type not found in map."}});
    return nullptr;
  }
  return TypeInfo(type).fName;
}

bool GetFamilyName(VariantType type, std::string_view& word) {
  const FamilyName name =
      IsKnownType(type) ? kFamilyNames[static_cast<std::size_t>(type)] : FamilyName{"", false};
  word = name.fWord;
  return name.fIsList;
}

Selvane::IUnicodeString* CVariant::ToString(Selvane::IUnicodeString* separator) const {
  return NewUnicodeString(ToText(TextOf(separator)));
}

CStringPtr CVariant::ToText(const CStringPtr& separator) const {
  std::string text;
  AppendText(Utf8Of(separator.Get()), text);
  return MakeText(text);
}

// Of a value that holds no variants.
void CVariant::AppendFlatText(std::string_view separator, std::string& out) const {
  if (fType == VariantType::Dimension) return PrintDimension(Elements<LongElement>(), out);
  if (fType == VariantType::IPRange) return PrintRange(Addresses(), separator, out);
  const VariantType elementType = IsListType() ? TypeInfo(fType).fBaseType : fType;
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (requires { &E::Print; }) {
      PrintElements<E>(Elements<E>(), elementType, separator, out);
    }
  });
}

// Every thread computes the same, so it does not matter whose store comes last.
std::uint64_t CVariant::GetHash() const {
  std::uint64_t hash = fHash.load(std::memory_order_relaxed);
  if (hash != 0) return hash;

  std::string text;
  if (fType == VariantType::StringList) {
    // Contract: nothing stands between the elements, so that lists of one concatenation hash alike.
    std::size_t size = kHashTextReserve;
    for (const CStringImpl* element : Elements<TextElement>()) size += Utf8Of(element).size();
    text.reserve(size);
    for (const CStringImpl* element : Elements<TextElement>()) text += Utf8Of(element);
  } else {
    AppendText(", ", text);
  }
  hash = HashOf(text);
  // Variants inside of this one change without its knowledge, through views and map values.
  if (!OwnsVariants()) fHash.store(hash, std::memory_order_relaxed);
  return hash;
}
