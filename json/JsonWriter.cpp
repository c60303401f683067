#include "json/JsonWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonTextScan.h"
#include "json/JsonTextSink.h"

namespace Tovrin::JSON {

namespace {

// --- Strings ---

// Writes what stands for one special byte.
void WriteSpecial(char c, JsonTextSink& out) {
  constexpr char kHexDigits[] = "0123456789ABCDEF";
  switch (c) {
    case '"':
      return out.Write("\\\"");
    case '\\':
      return out.Write("\\\\");
    case '\b':
      return out.Write("\\b");
    case '\t':
      return out.Write("\\t");
    case '\n':
      return out.Write("\\n");
    case '\f':
      return out.Write("\\f");
    case '\r':
      return out.Write("\\r");
    default: {
      const auto byte = static_cast<unsigned char>(c);
      out.Write("\\u00");
      out.Write(kHexDigits[byte >> 4]);
      out.Write(kHexDigits[byte & 0xF]);
    }
  }
}

void WriteEscapedText(std::string_view text, JsonTextSink& out) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (true) {
    const char* special = FindSpecial(at, end);
    out.Write(std::string_view(at, special));
    if (special == end) return;
    WriteSpecial(*special, out);
    at = special + 1;
  }
}

// The text in quotes, with one more text right behind it.
void WriteQuoted(std::string_view text, bool isPlain, std::string_view behind, JsonTextSink& out) {
  if (!isPlain) {
    out.Write('"');
    WriteEscapedText(text, out);
    out.Write('"');
    return out.Write(behind);
  }
  const std::size_t size = text.size() + 2;
  char* to = out.Room(size + behind.size());
  to[0] = '"';
  CopyBytes(text, to + 1);
  to[size - 1] = '"';
  CopyBytes(behind, to + size);
  out.Advance(size + behind.size());
}

// --- Numbers ---

// Contract: the count comes from the logarithm of the double, which rounds up to the power for the
// numbers just below a power of ten from 10^15 on; these get a leading zero.
//
// Perf: below 10^14 the logarithm is always right, and counting is cheaper (bench/json, writing).
int DigitCount(std::uint64_t value) {
  constexpr std::uint64_t kLogarithmIsRightBelow = 100'000'000'000'000;
  if (value >= kLogarithmIsRightBelow) {
    return static_cast<int>(std::log10(static_cast<double>(value))) + 1;
  }
  constexpr auto kPowers = [] {  // of ten
    std::array<std::uint64_t, 16> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
  }();
  const int least =
      static_cast<int>(std::bit_width(value)) * 1233 >> 12;  // 1233/4096 is a little below log10(2)
  return least + (value >= kPowers[static_cast<std::size_t>(least)] ? 1 : 0);
}

// "00" to "99".
constexpr auto kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

void WriteInteger(const JsonInteger& integer, JsonTextSink& out) {
  auto value = static_cast<std::uint64_t>(integer.Value());
  if (value == 0) return out.Write('0');
  if (!integer.IsUnsigned() && integer.Value() < 0) {
    out.Write('-');
    value = 0 - value;
  }
  const int count = DigitCount(value);
  char* digits = out.Room(static_cast<std::size_t>(count));
  int place = count;
  for (; place >= 2; value /= 100) {
    place -= 2;
    std::memcpy(digits + place, kDigitPairs.data() + value % 100 * 2, 2);
  }
  if (place == 1) digits[0] = static_cast<char>('0' + value % 10);
  out.Advance(static_cast<std::size_t>(count));
}

// Room for any double in either format: 767 significant digits, or 309 before the point.
using NumberText = std::array<char, 1100>;

// As the C format %.*g, in the classic locale.
void WriteWithPrecision(double value, std::int32_t precision, JsonTextSink& out) {
  constexpr std::int32_t kMaxDigits = 767;  // no double has more
  NumberText buffer;
  const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                     std::chars_format::general, std::min(precision, kMaxDigits));
  const std::string_view text(buffer.data(), written.ptr);
  out.Write(text);
  if (text.find_first_of(".Ee") == std::string_view::npos) out.Write(".0");
}

// True for a double that a 64-bit integer holds exactly.
bool IsWhole(double value) {
  constexpr double kBound = 9223372036854775808.0;
  return value >= -kBound && value < kBound && std::trunc(value) == value;
}

// As the C format %f, in the classic locale, with the zeros at the end taken off but for one.
void WriteWithSixDecimals(double value, JsonTextSink& out) {
  NumberText buffer;
  const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                     std::chars_format::fixed, 6);
  std::string_view text(buffer.data(), written.ptr);
  while (text.ends_with('0') && !text.ends_with(".0")) text.remove_suffix(1);
  out.Write(text);
}

void WriteReal(const JsonReal& real, JsonTextSink& out) {
  if (!real.Text().empty()) return out.Write(real.Text());

  const double value = real.Value();
  if (real.Precision() >= 1) return WriteWithPrecision(value, real.Precision(), out);
  if (std::isnan(value)) return out.Write("nan");
  if (std::isinf(value)) return out.Write("inf");  // Contract: without a sign
  if (!IsWhole(value)) return WriteWithSixDecimals(value, out);
  out.Write(std::to_string(static_cast<std::int64_t>(value)));
  out.Write(".0");
}

// --- Trees ---

// How children are set apart. The compact form is its own type, so that its writer asks nothing.
struct CompactLayout {
  static constexpr bool kIsCompact = true;
  void NewLine(std::size_t, JsonTextSink&) const {}
};

struct PrettyLayout {
  static constexpr bool kIsCompact = false;
  const std::string& indent;
  const std::string& lineBreak;
  std::int64_t level;  // of the outermost value

  void NewLine(std::size_t depth, JsonTextSink& out) const {
    out.Write(lineBreak);
    if (indent.empty()) return;
    const std::int64_t count = level + static_cast<std::int64_t>(depth);
    for (std::int64_t i = 0; i < count; ++i) out.Write(indent);
  }
};

// Writes a tree; the containers that are open stand in a list of their own.
template <class Layout>
class TreeWriter {
public:
  TreeWriter(const Layout& layout, JsonTextSink& out) : fLayout(layout), fOut(out) {}

  void Write(const JsonValue& root) {
    if (!WriteWhole(root)) BeginContainer(root);
    while (!fOpen.empty()) Continue();
  }

private:
  struct Open {
    const JsonValue* container;
    std::size_t next = 0;      // of its items, entries or places
    bool hasChildren = false;  // some were written
  };

  // Writes a value that needs no place in the list; false for a container with children, of which
  // nothing is written.
  bool WriteWhole(const JsonValue& value) {
    switch (value.GetType()) {
      case JsonValue::TypeString: {
        const auto& string = static_cast<const JsonString&>(value);
        WriteQuoted(string.Text(), string.IsPlain(), {}, fOut);
        return true;
      }
      case JsonValue::TypeInteger:
        WriteInteger(static_cast<const JsonInteger&>(value), fOut);
        return true;
      case JsonValue::TypeReal:
        WriteReal(static_cast<const JsonReal&>(value), fOut);
        return true;
      case JsonValue::TypeTrue:
        fOut.Write("true");
        return true;
      case JsonValue::TypeFalse:
        fOut.Write("false");
        return true;
      case JsonValue::TypeNull:
        fOut.Write("null");
        return true;
      case JsonValue::TypeArray:
        return WriteWholeArray(static_cast<const JsonArray&>(value));
      case JsonValue::TypeObject:
        return WriteEmpty("{}", static_cast<const JsonObject&>(value).Size());
      case JsonValue::TypeCompiledObject:
        return WriteEmpty("{}", static_cast<const JsonCompiledObject&>(value).Count());
    }
    return true;
  }
  bool WriteEmpty(std::string_view text, std::uint64_t count) {
    if (count != 0) return false;
    fOut.Write(text);
    return true;
  }
  bool WriteWholeArray(const JsonArray& array) {
    const std::string_view numbers = array.PackedText();
    if (numbers.empty()) return WriteEmpty("[]", array.Size());
    fOut.Write('[');
    WriteNumbers(numbers);
    fLayout.NewLine(fOpen.size(), fOut);
    fOut.Write(']');
    return true;
  }
  void WriteNumbers(std::string_view numbers) {
    if constexpr (Layout::kIsCompact) return fOut.Write(numbers);
    for (std::size_t begin = 0; begin < numbers.size();) {
      const std::size_t end = std::min(numbers.find(',', begin), numbers.size() - 1) + 1;
      fLayout.NewLine(fOpen.size() + 1, fOut);
      fOut.Write(numbers.substr(begin, end - begin));  // the comma, too
      begin = end;
    }
  }

  void BeginContainer(const JsonValue& container) {
    fOut.Write(container.GetType() == JsonValue::TypeArray ? '[' : '{');
    fOpen.push_back({&container});
  }

  // Writes children of the innermost container until it ends, or one of them is a container.
  void Continue() {
    Open open = fOpen.back();
    switch (open.container->GetType()) {
      case JsonValue::TypeArray:
        return ContinueArray(open, static_cast<const JsonArray&>(*open.container));
      case JsonValue::TypeObject:
        return ContinueObject(open, static_cast<const JsonObject&>(*open.container));
      default:
        return ContinueCompiledObject(open,
                                      static_cast<const JsonCompiledObject&>(*open.container));
    }
  }
  void ContinueArray(Open& open, const JsonArray& array) {
    for (const auto items = array.Items(); open.next < items.size();) {
      const JsonValue* item = items[open.next++];
      if (!item) continue;
      NextChild(open);
      if (!WriteWhole(*item)) return Leave(open, *item);
    }
    End(']');
  }
  void ContinueObject(Open& open, const JsonObject& object) {
    for (const auto entries = object.Entries(); open.next < entries.size();) {
      const JsonObject::Entry& entry = entries[open.next++];
      if (!entry.Value()) continue;
      NextChild(open);
      WriteQuoted(entry.Key(), entry.KeyIsPlain(), Layout::kIsCompact ? ":" : ": ", fOut);
      if (!WriteWhole(*entry.Value())) return Leave(open, *entry.Value());
    }
    End('}');
  }
  // Contract: no blank behind the colon, in either form.
  void ContinueCompiledObject(Open& open, const JsonCompiledObject& object) {
    const auto values = object.Values();
    while (object.Schema() && open.next < values.size()) {
      const std::size_t place = open.next++;
      if (!values[place]) continue;
      NextChild(open);
      WriteQuoted(object.Schema()->Keys[place], false, ":", fOut);
      if (!WriteWhole(*values[place])) return Leave(open, *values[place]);
    }
    End('}');
  }

  void NextChild(Open& open) {
    if (open.hasChildren) fOut.Write(',');
    open.hasChildren = true;
    fLayout.NewLine(fOpen.size(), fOut);
  }
  // Leaves the innermost container for a child, to come back to it.
  void Leave(const Open& open, const JsonValue& child) {
    fOpen.back() = open;
    BeginContainer(child);
  }
  void End(char closing) {
    fOpen.pop_back();
    fLayout.NewLine(fOpen.size(), fOut);
    fOut.Write(closing);
  }

  const Layout& fLayout;
  JsonTextSink& fOut;
  std::vector<Open> fOpen;  // containers, the innermost last
};

void WriteCompact(const JsonValue& value, std::string& out) {
  JsonTextSink sink(out);
  TreeWriter(CompactLayout{}, sink).Write(value);
}

void WritePretty(const JsonValue& value, std::string& out, const std::string& indent,
                 const std::string& lineBreak, std::int32_t level) {
  JsonTextSink sink(out);
  const PrettyLayout layout{indent, lineBreak, level};
  TreeWriter(layout, sink).Write(value);
}

}  // namespace

void JsonNull::ToCompactText(std::string& out) const {
  out += "null";
}
void JsonTrue::ToCompactText(std::string& out) const {
  out += "true";
}
void JsonFalse::ToCompactText(std::string& out) const {
  out += "false";
}
void JsonInteger::ToCompactText(std::string& out) const {
  WriteCompact(*this, out);
}
void JsonReal::ToCompactText(std::string& out) const {
  WriteCompact(*this, out);
}
void JsonString::ToCompactText(std::string& out) const {
  WriteCompact(*this, out);
}
void JsonArray::ToCompactText(std::string& out) const {
  WriteCompact(*this, out);
}
void JsonObject::ToCompactText(std::string& out) const {
  WriteCompact(*this, out);
}
void JsonCompiledObject::ToCompactText(std::string& out) const {
  WriteCompact(*this, out);
}

void JsonArray::ToPrettyText(std::string& out, const std::string& indent,
                             const std::string& lineBreak, std::int32_t level) const {
  WritePretty(*this, out, indent, lineBreak, level);
}
void JsonObject::ToPrettyText(std::string& out, const std::string& indent,
                              const std::string& lineBreak, std::int32_t level) const {
  WritePretty(*this, out, indent, lineBreak, level);
}
void JsonCompiledObject::ToPrettyText(std::string& out, const std::string& indent,
                                      const std::string& lineBreak, std::int32_t level) const {
  WritePretty(*this, out, indent, lineBreak, level);
}

void WriteText(const JsonValue& value, std::string& out, const char* indent) {
  WriteText(value, out, std::string(indent ? indent : ""));
}

void WriteText(const JsonValue& value, std::string& out, const std::string& indent) {
  out.clear();
  if (indent.empty()) {
    value.ToCompactText(out);
  } else {
    value.ToPrettyText(out, indent, "\n", 0);
  }
}

void WriteEscaped(std::string_view text, std::string& out) {
  JsonTextSink sink(out);
  WriteEscapedText(text, sink);
}

}  // namespace Tovrin::JSON
