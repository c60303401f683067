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

// Copies text up to its first special byte, and tells where that is.
//
// Perf: most texts are short, and copying while searching spares a second pass and a call
// (bench/json, writing). A copied word may reach behind the special byte; what follows is written
// over it.
const char* CopyPlain(const char* at, const char* end, JsonTextSink& out) {
  const char* const begin = at;
  char* to = out.Room(static_cast<std::size_t>(end - at));
  for (; end - at >= 8; at += 8, to += 8) {
    std::memcpy(to, at, 8);
    if (const char* special = FindSpecial(at, at + 8); special != at + 8) {
      out.Advance(static_cast<std::size_t>(special - begin));
      return special;
    }
  }
  while (at != end && !IsSpecial(*at)) *to++ = *at++;
  out.Advance(static_cast<std::size_t>(at - begin));
  return at;
}

void WriteEscapedText(std::string_view text, JsonTextSink& out) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (true) {
    at = CopyPlain(at, end, out);
    if (at == end) return;
    WriteSpecial(*at++, out);
  }
}

void WriteQuoted(std::string_view text, JsonTextSink& out) {
  out.Write('"');
  WriteEscapedText(text, out);
  out.Write('"');
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
  const int least = std::bit_width(value) * 1233 >> 12;  // 1233/4096 is a little above log10(2)
  return least + (value >= kPowers[static_cast<std::size_t>(least)] ? 1 : 0);
}

void WriteInteger(const JsonInteger& integer, JsonTextSink& out) {
  auto value = static_cast<std::uint64_t>(integer.Value());
  if (value == 0) return out.Write('0');
  if (!integer.IsUnsigned() && integer.Value() < 0) {
    out.Write('-');
    value = 0 - value;
  }
  const int count = DigitCount(value);
  char* digits = out.Room(static_cast<std::size_t>(count));
  for (int i = count - 1; i >= 0; --i, value /= 10) digits[i] = static_cast<char>('0' + value % 10);
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
    Begin(root);
    while (!fOpen.empty()) Continue();
  }

private:
  struct Open {
    const JsonValue* container;
    std::size_t next = 0;      // of its items, entries or places
    bool hasChildren = false;  // some were written
  };

  // Writes a value without children, or the head of a container.
  void Begin(const JsonValue& value) {
    switch (value.GetType()) {
      case JsonValue::TypeString:
        return WriteQuoted(static_cast<const JsonString&>(value).Text(), fOut);
      case JsonValue::TypeInteger:
        return WriteInteger(static_cast<const JsonInteger&>(value), fOut);
      case JsonValue::TypeReal:
        return WriteReal(static_cast<const JsonReal&>(value), fOut);
      case JsonValue::TypeTrue:
        return fOut.Write("true");
      case JsonValue::TypeFalse:
        return fOut.Write("false");
      case JsonValue::TypeNull:
        return fOut.Write("null");
      case JsonValue::TypeArray:
        return BeginContainer(value, '[', static_cast<const JsonArray&>(value).Size() == 0);
      case JsonValue::TypeObject:
        return BeginContainer(value, '{', static_cast<const JsonObject&>(value).Size() == 0);
      case JsonValue::TypeCompiledObject:
        return BeginContainer(value, '{',
                              static_cast<const JsonCompiledObject&>(value).Count() == 0);
    }
  }
  void BeginContainer(const JsonValue& container, char opening, bool isEmpty) {
    fOut.Write(opening);
    if (isEmpty) {
      fOut.Write(opening == '[' ? ']' : '}');
    } else {
      fOpen.push_back({&container});
    }
  }

  // Writes children of the innermost container until it ends, or one of them is a container.
  void Continue() {
    const std::size_t depth = fOpen.size();
    const JsonValue& container = *fOpen.back().container;
    switch (container.GetType()) {
      case JsonValue::TypeArray:
        return ContinueArray(static_cast<const JsonArray&>(container), depth);
      case JsonValue::TypeObject:
        return ContinueObject(static_cast<const JsonObject&>(container), depth);
      default:
        return ContinueCompiledObject(static_cast<const JsonCompiledObject&>(container), depth);
    }
  }
  void ContinueArray(const JsonArray& array, std::size_t depth) {
    for (const auto items = array.Items(); fOpen.back().next < items.size();) {
      const JsonValue* item = items[fOpen.back().next++];
      if (!item) continue;
      NextChild();
      Begin(*item);
      if (fOpen.size() != depth) return;
    }
    End(']');
  }
  void ContinueObject(const JsonObject& object, std::size_t depth) {
    for (const auto entries = object.Entries(); fOpen.back().next < entries.size();) {
      const JsonObject::Entry& entry = entries[fOpen.back().next++];
      if (!entry.Value()) continue;
      NextChild();
      WriteQuoted(entry.Key(), fOut);
      fOut.Write(Layout::kIsCompact ? ":" : ": ");
      Begin(*entry.Value());
      if (fOpen.size() != depth) return;
    }
    End('}');
  }
  // Contract: no blank behind the colon, in either form.
  void ContinueCompiledObject(const JsonCompiledObject& object, std::size_t depth) {
    const auto values = object.Values();
    while (object.Schema() && fOpen.back().next < values.size()) {
      const std::size_t place = fOpen.back().next++;
      if (!values[place]) continue;
      NextChild();
      WriteQuoted(object.Schema()->Keys[place], fOut);
      fOut.Write(':');
      Begin(*values[place]);
      if (fOpen.size() != depth) return;
    }
    End('}');
  }

  void NextChild() {
    if (fOpen.back().hasChildren) fOut.Write(',');
    fOpen.back().hasChildren = true;
    fLayout.NewLine(fOpen.size(), fOut);
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
