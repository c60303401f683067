#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include "json/JsonByteOrder.h"
#include "json/JsonMsgPack.h"
#include "json/JsonTextScan.h"
#include "json/JsonTreeReader.h"

namespace Tovrin::JSON {

namespace {

constexpr const char* kInputEnded = "unexpected end of input";

// The bit of JsonKeyFlags that a schema's key needs for a value of that type.
constexpr unsigned KeyFlagFor(JsonValue::Type type) {
  switch (type) {
    case JsonValue::TypeString:
      return KeyString;
    case JsonValue::TypeInteger:
    case JsonValue::TypeReal:
      return KeyNumber;
    case JsonValue::TypeTrue:
    case JsonValue::TypeFalse:
      return KeyBoolean;
    case JsonValue::TypeNull:
      return KeyNull;
    case JsonValue::TypeArray:
      return KeyArray;
    case JsonValue::TypeObject:
      return KeyObject;
    case JsonValue::TypeCompiledObject:
      return KeyCompiledObject;
  }
  return 0;
}

struct BinaryFrame : JsonOpenContainer {
  std::uint64_t missing;             // items or members still to come
  const char* valueStart = nullptr;  // CompiledObject: of the value being read
};

// Reads one MsgPack value. No room is made from a count, so a false one costs nothing.
class BinaryParser : private JsonTreeReader<BinaryParser, BinaryFrame> {
public:
  BinaryParser(std::string_view bytes, JsonParseContext& context)
      : JsonTreeReader(context),
        fBegin(bytes.data()),
        fAt(bytes.data()),
        fEnd(fAt + bytes.size()) {}

  JsonValue* Parse(const JsonCompiledSchema* schema) {
    JsonTextCursor cursor{fBegin, fEnd, 0, fBegin};
    JsonValue* root = fAt == fEnd ? Fail("empty input") : ReadTree(schema);
    if (root) {
      cursor.at = fAt;
      cursor.SkipWhiteSpace();
      fAt = cursor.at;
      if (!cursor.AtEnd()) {
        root->Release();
        root = Fail("illegal trailing characters after value");
      }
    }
    fContext.Position = static_cast<std::uint64_t>(fAt - fBegin);
    fContext.Line = cursor.line;
    fContext.LineStart = static_cast<std::uint64_t>(cursor.lineStart - fBegin);
    fContext.ParseSucceeded = !fFailed;
    return root;
  }

private:
  friend class JsonTreeReader<BinaryParser, BinaryFrame>;

  std::nullptr_t FailAt(const char* position, const char* message) {
    fAt = position;
    return Fail(message);
  }

  // --- Values ---

  // Reads a value without children, or opens a container. Null when it opened one, or failed.
  JsonValue* Begin(const JsonCompiledSchema* schema) {
    if (fAt == fEnd) return Fail(kInputEnded);
    const auto code = static_cast<unsigned char>(*fAt++);
    if (code < 0x80) return NewInteger(std::int64_t{code});
    if (code < 0x90) return OpenMap(code & 0x0F, schema);
    if (code < 0xA0) return OpenArray(code & 0x0F, schema);
    if (code < 0xC0) return ReadText(code & 0x1F);
    if (code >= 0xE0) return NewInteger(std::int64_t{code} - 0x100);
    switch (code) {
      case 0xC0:
        return fBuilder.Arena().New<JsonNull>();
      case 0xC2:
        return fBuilder.Arena().New<JsonFalse>();
      case 0xC3:
        return fBuilder.Arena().New<JsonTrue>();
      case 0xCA:
        return ReadReal<std::uint32_t, float>();
      case 0xCB:
        return ReadReal<std::uint64_t, double>();
      case 0xCC:
        return ReadUnsigned<std::uint8_t>();
      case 0xCD:
        return ReadUnsigned<std::uint16_t>();
      case 0xCE:
        return ReadUnsigned<std::uint32_t>();
      case 0xCF:
        return ReadUnsigned<std::uint64_t>();
      case 0xD0:
        return ReadSigned<std::uint8_t, std::int8_t>();
      case 0xD1:
        return ReadSigned<std::uint16_t, std::int16_t>();
      case 0xD2:
        return ReadSigned<std::uint32_t, std::int32_t>();
      case 0xD3:
        return ReadSigned<std::uint64_t, std::int64_t>();
      case 0xD9:
      case 0xDA:
      case 0xDB: {
        std::uint64_t size = 0;
        return ReadTextSize(code, size) ? ReadText(size) : nullptr;
      }
      case 0xDC:
        return OpenCounted<std::uint16_t>(&BinaryParser::OpenArray, schema);
      case 0xDD:
        return OpenCounted<std::uint32_t>(&BinaryParser::OpenArray, schema);
      case 0xDE:
        return OpenCounted<std::uint16_t>(&BinaryParser::OpenMap, schema);
      case 0xDF:
        return OpenCounted<std::uint32_t>(&BinaryParser::OpenMap, schema);
      default:
        return FailAt(fAt - 1, "unsupported MsgPack type code");
    }
  }

  // Where the input ends inside a number or a text, the position is where the missing byte would
  // be.
  bool Has(std::uint64_t size) {
    if (size <= static_cast<std::uint64_t>(fEnd - fAt)) return true;
    FailAt(fEnd, kInputEnded);
    return false;
  }
  template <class Number>
  bool ReadRaw(Number& value) {
    if (!Has(sizeof value)) return false;
    value = LoadBigEndian<Number>(fAt);
    fAt += sizeof value;
    return true;
  }

  JsonValue* NewInteger(std::int64_t value) { return fBuilder.Arena().New<JsonInteger>(value); }
  template <class Raw>
  JsonValue* ReadUnsigned() {
    Raw raw = 0;
    if (!ReadRaw(raw)) return nullptr;
    return fBuilder.Arena().New<JsonInteger>(JsonInteger::Unsigned{}, std::uint64_t{raw});
  }
  template <class Raw, class Signed>
  JsonValue* ReadSigned() {
    Raw raw = 0;
    return ReadRaw(raw) ? NewInteger(std::int64_t{static_cast<Signed>(raw)}) : nullptr;
  }
  template <class Raw, class Real>
  JsonValue* ReadReal() {
    Raw raw = 0;
    if (!ReadRaw(raw)) return nullptr;
    return fBuilder.Arena().New<JsonReal>(static_cast<double>(std::bit_cast<Real>(raw)));
  }

  // The length of a string with one of the codes D9, DA, DB.
  bool ReadTextSize(unsigned char code, std::uint64_t& size) {
    if (code == 0xD9) return ReadTextSize<std::uint8_t>(size);
    if (code == 0xDA) return ReadTextSize<std::uint16_t>(size);
    return ReadTextSize<std::uint32_t>(size);
  }
  template <class Raw>
  bool ReadTextSize(std::uint64_t& size) {
    Raw raw = 0;
    if (!ReadRaw(raw)) return false;
    size = raw;
    return true;
  }
  bool TakeText(std::uint64_t size, std::string_view& text) {
    if (!Has(size)) return false;
    text = {fAt, static_cast<std::size_t>(size)};
    fAt += size;
    return true;
  }
  // Contract: a text that is not valid UTF-8 becomes an empty one, without an error.
  JsonValue* ReadText(std::uint64_t size) {
    std::string_view text;
    if (!TakeText(size, text)) return nullptr;
    if (!fContext.AssumeValidUtf8 && !IsValidUtf8(text)) text = {};
    return fBuilder.Arena().NewString(text, false);
  }

  // --- Containers ---

  std::nullptr_t OpenArray(std::uint64_t count, const JsonCompiledSchema* schema) {
    fFrames.push_back(
        {{.kind = Kind::Array, .begin = fBuilder.ItemCount(), .schema = schema}, count});
    return nullptr;
  }
  std::nullptr_t OpenMap(std::uint64_t count, const JsonCompiledSchema* schema) {
    if (schema) {
      fFrames.push_back({{.kind = Kind::CompiledObject, .schema = schema}, count});
      fFrames.back().compiled = new JsonCompiledObject(schema);
    } else {
      fFrames.push_back({{.kind = Kind::Object, .begin = fBuilder.MemberCount()}, count});
    }
    return nullptr;
  }
  template <class Raw>
  JsonValue* OpenCounted(std::nullptr_t (BinaryParser::*open)(std::uint64_t,
                                                              const JsonCompiledSchema*),
                         const JsonCompiledSchema* schema) {
    Raw count = 0;
    return ReadRaw(count) ? (this->*open)(count, schema) : nullptr;
  }

  // Goes on with the innermost container until it is whole, and is the answer, or until another one
  // is opened in it.
  JsonValue* Continue() {
    while (fFrames.back().missing > 0) {
      BinaryFrame& frame = fFrames.back();
      --frame.missing;
      JsonValue* child = BeginChild(frame);
      if (!child || !Store(child)) return nullptr;
    }
    return CloseFrame();
  }

  JsonValue* BeginChild(BinaryFrame& frame) {
    if (frame.kind == Kind::Array) return Begin(frame.schema);
    if (!ReadKey(frame.key)) return nullptr;
    if (frame.kind == Kind::Object) return Begin(nullptr);

    // Contract: the child's schema is used whatever the flags say, so a key for a plain object that
    // has one gets a compiled object, and refuses it.
    frame.place = frame.schema->Find(frame.key);
    frame.valueStart = fAt;
    const bool isKnown = frame.place != JsonCompiledSchema::kNone;
    return Begin(isKnown ? frame.schema->Children[frame.place] : nullptr);
  }

  // Contract: a map that ends where a key should begin lacks a string, not input.
  bool ReadKey(std::string_view& key) {
    const auto code = fAt == fEnd ? 0 : static_cast<unsigned char>(*fAt);
    if (code >= 0xA0 && code < 0xC0) {
      ++fAt;
      return TakeText(code & 0x1F, key);
    }
    if (code >= 0xD9 && code <= 0xDB) {
      ++fAt;
      std::uint64_t size = 0;
      return ReadTextSize(static_cast<unsigned char>(code), size) && TakeText(size, key);
    }
    Fail("string expected");
    return false;
  }

  // Puts a whole value into the innermost container; false when that fails.
  bool Store(JsonValue* value) {
    BinaryFrame& frame = fFrames.back();
    switch (frame.kind) {
      case Kind::Array:
        fBuilder.AddItem(value);
        return true;
      case Kind::Object:
        return StoreMember(frame, value);
      case Kind::CompiledObject:
        break;
    }
    return StoreCompiledMember(frame, value);
  }
  // Contract: the key is checked whatever AssumeValidUtf8 says.
  bool StoreMember(const BinaryFrame& frame, JsonValue* value) {
    if (IsValidUtf8(frame.key)) {
      fBuilder.AddMember(frame.key, value, false);
      return true;
    }
    value->Release();
    if (fContext.RejectDuplicateKeys) Fail("duplicate key");
    return !fFailed;
  }
  // Contract: the flags hold more than types, so a key that is required and nothing else takes no
  // value at all; and an unknown key is never refused.
  bool StoreCompiledMember(const BinaryFrame& frame, JsonValue* value) {
    if (frame.place == JsonCompiledSchema::kNone) {
      value->Release();
      return true;
    }
    const unsigned flags = frame.schema->Flags[frame.place];
    if (flags != 0 && (flags & KeyFlagFor(value->GetType())) == 0) {
      value->Release();
      FailAt(frame.valueStart, "value is not of expected type");
      return false;
    }
    if (frame.compiled->Set(frame.place, value)) return true;
    if (fContext.RejectDuplicateKeys) FailAt(frame.valueStart, "duplicate key");
    return !fFailed;
  }

  const char* const fBegin;
  const char* fAt;
  const char* const fEnd;
};

}  // namespace

JsonValue* ParseMsgPack(const std::string& bytes, JsonParseContext* context,
                        const JsonCompiledSchema* schema) {
  JsonParseContext own;
  if (!context) context = &own;
  context->Reset();
  return BinaryParser(bytes, *context).Parse(schema);
}

}  // namespace Tovrin::JSON
