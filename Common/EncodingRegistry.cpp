#include "Common/EncodingRegistry.h"

#include <iconv.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kEncodingNames[] = {"ASCII",    "UTF-8",   "ISO-8859-1", "UTF-32LE",
                                          "UTF-32BE", "UTF-32",  "UTF-16LE",   "UTF-16BE",
                                          "UTF-16",   "GB18030", "RAW"};
static_assert(std::size(kEncodingNames) == Charset::FirstRegistered);

constexpr std::uint32_t kNotInTable = 0xFFFFFFFF;

char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Own comparison: the C library's follows the locale of the host.
bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (UpperAscii(left[i]) != UpperAscii(right[i])) return false;
  }
  return true;
}

// What stands behind "UTF" and an optional "-".
std::uint32_t IdOfUtfSuffix(std::string_view suffix) {
  if (suffix == "8") return Charset::Utf8;
  if (suffix == "16") return Charset::Utf16;
  if (suffix == "16LE") return Charset::Utf16LE;
  if (suffix == "16BE") return Charset::Utf16BE;
  if (suffix == "32") return Charset::Utf32;
  if (suffix == "32LE") return Charset::Utf32LE;
  if (suffix == "32BE") return Charset::Utf32BE;
  return kNotInTable;
}

std::uint32_t IdInTable(std::string_view name) {
  if (name.empty()) return Charset::Ascii;
  if (EqualsIgnoringAsciiCase(name, "ASCII") || EqualsIgnoringAsciiCase(name, "CHAR")) {
    return Charset::Ascii;
  }
  if (EqualsIgnoringAsciiCase(name, "GB18030")) return Charset::Gb18030;
  if (EqualsIgnoringAsciiCase(name, "ISO-8859-1")) return Charset::Latin1;
  if (EqualsIgnoringAsciiCase(name, "RAW")) return Charset::Raw;
  if (EqualsIgnoringAsciiCase(name.substr(0, 3), "UTF")) {
    name.remove_prefix(3);
    if (name.starts_with('-')) name.remove_prefix(1);
    return IdOfUtfSuffix(name);
  }
  if (name == "UCS-4-INTERNAL") return Charset::Utf32LE;
  if (name == "UCS-2-INTERNAL") return Charset::Utf16LE;
  return kNotInTable;
}

// The characters that names of encodings are made of. A converter of the C library passes over any
// other and takes what is left: "UTF-8 " for "UTF-8", a blank alone for the locale's own encoding.
// "/" and "," begin options.
bool IsConverterName(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) {
    const char upper = UpperAscii(c);
    return (upper >= 'A' && upper <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("-_.:").find(c) != std::string_view::npos;
  });
}

bool ConverterExists(const std::string& name) {
  if (!IsConverterName(name)) return false;

  const iconv_t converter = iconv_open("UTF-8", name.c_str());
  if (converter == reinterpret_cast<iconv_t>(-1)) return false;
  iconv_close(converter);
  return true;
}

// The names that are not in the table, in the order of their arrival. Nothing is ever taken out, so
// a name's text stays where it is.
class Registry {
public:
  std::uint32_t Enter(std::string_view name) {
    const std::lock_guard guard(fLock);
    const auto [entry, isNew] = fIds.try_emplace(std::string(name), fNextId);
    if (isNew) {
      fEntries.push_back({entry->first.c_str(), ConverterExists(entry->first)});
      ++fNextId;
    }
    return entry->second;
  }

  // Null when the id was never handed out.
  const char* NameOf(std::uint32_t id) const {
    const std::lock_guard guard(fLock);
    return IsHandedOut(id) ? EntryOf(id).name : nullptr;
  }

  bool IsSupported(std::uint32_t id) const {
    const std::lock_guard guard(fLock);
    return IsHandedOut(id) && EntryOf(id).isSupported;
  }

  // Asks the converter only for a name that was never entered.
  bool IsSupported(std::string_view name) const {
    {
      const std::lock_guard guard(fLock);
      const auto entry = fIds.find(name);
      if (entry != fIds.end()) return EntryOf(entry->second).isSupported;
    }
    return ConverterExists(std::string(name));
  }

private:
  struct Entry {
    const char* name;  // the key in fIds
    bool isSupported;
  };

  bool IsHandedOut(std::uint32_t id) const {
    return id >= Charset::FirstRegistered && id < fNextId;
  }
  const Entry& EntryOf(std::uint32_t id) const { return fEntries[id - Charset::FirstRegistered]; }

  mutable std::mutex fLock;
  // Guarded by fLock.
  std::map<std::string, std::uint32_t, std::less<>> fIds;
  std::vector<Entry> fEntries;  // by id, the first is FirstRegistered
  std::uint32_t fNextId = Charset::FirstRegistered;
};

// Built at the first foreign name, which may come from an initialiser of another unit.
Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

std::uint32_t EncodingId(const char* name) {
  const std::string_view text = name ? name : "";
  const std::uint32_t id = IdInTable(text);
  return id != kNotInTable ? id : TheRegistry().Enter(text);
}

const char* EncodingName(std::uint32_t id) {
  if (id < Charset::FirstRegistered) return kEncodingNames[id];
  const char* name = TheRegistry().NameOf(id);
  return name ? name : kEncodingNames[Charset::Ascii];
}

bool IsKnownEncoding(std::uint32_t id) {
  if (id < Charset::FirstRegistered) return id != Charset::Raw;
  return TheRegistry().IsSupported(id);
}

bool IsEncodingSupported(const char* name) {
  const std::string_view text = name ? name : "";
  const std::uint32_t id = IdInTable(text);
  return id != kNotInTable ? id != Charset::Raw : TheRegistry().IsSupported(text);
}

std::size_t OutputBytesPerCharacter(std::uint32_t id) {
  switch (id) {
    case Charset::Utf16LE:
    case Charset::Utf16BE:
      return 2;
    case Charset::Ascii:
    case Charset::Latin1:
    case Charset::Utf32:
    case Charset::Utf16:
    case Charset::Raw:
      return 1;
    default:
      return 4;
  }
}
