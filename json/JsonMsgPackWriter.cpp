#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <vector>

#include "json/JsonArray.h"
#include "json/JsonByteOrder.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonMsgPack.h"
#include "json/JsonObject.h"
#include "memory/Allocator.h"

namespace Tovrin::JSON {

namespace {

// Contract: an infinity fits into a float, a NaN does not, as no comparison with one holds.
bool FitsIntoFloat(double value) {
  if (std::isfinite(value) && std::abs(value) > FLT_MAX) return false;
  return static_cast<double>(static_cast<float>(value)) == value;
}

}  // namespace

// Chunks come from the C heap: they are large, short-lived and grow, which the module's own
// allocator is not made for. Where there is none left the process ends as it does there.
JsonMsgPackWriter::Chunk JsonMsgPackWriter::NewChunk(std::size_t size) {
  void* chunk = std::malloc(size);
  if (!chunk) MemoryFailure("malloc", size);
  return Chunk(static_cast<char*>(chunk));
}

void JsonMsgPackWriter::FreeChunk::operator()(char* chunk) const {
  std::free(chunk);
}

JsonMsgPackWriter::JsonMsgPackWriter(std::string& target)
    : fTarget(target), fStart(NewChunk(kFirstChunkSize)) {
  fCursor = fStart.get();
  fEnd = fCursor + kFirstChunkSize;
}

JsonMsgPackWriter::~JsonMsgPackWriter() {
  try {
    Flush();
  } catch (const std::exception&) {
    // A target that cannot grow stays as it is. The writer may be going because of just that.
  }
}

void JsonMsgPackWriter::NextChunk(std::size_t need) {
  const auto used = static_cast<std::size_t>(fCursor - fStart.get());
  fFinished.emplace_back(std::move(fStart), used);
  fFinishedBytes += used;
  fChunkSize += need > fChunkSize ? need : fChunkSize;
  fStart = NewChunk(fChunkSize);
  fCursor = fStart.get();
  fEnd = fCursor + fChunkSize;
}

// Nothing is delivered twice, whatever fails on the way: the destructor flushes again.
void JsonMsgPackWriter::Flush() {
  const auto finished = std::exchange(fFinished, {});
  const std::uint64_t finishedBytes = std::exchange(fFinishedBytes, 0);
  const auto used = static_cast<std::size_t>(std::exchange(fCursor, fStart.get()) - fStart.get());
  if (!fOk) return;
  fTarget.reserve(fTarget.size() + finishedBytes + used);
  for (const auto& [chunk, size] : finished) fTarget.append(chunk.get(), size);
  fTarget.append(fStart.get(), used);
}

template <class Number>
void JsonMsgPackWriter::WriteCoded(unsigned code, Number value) {
  char* at = MakeRoom(1 + sizeof value);
  *at = static_cast<char>(code);
  StoreBigEndian(value, at + 1);
  fCursor += 1 + sizeof value;
}

void JsonMsgPackWriter::WriteUnsigned(std::uint64_t value) {
  if (value <= 0x7F) {
    WriteByte(static_cast<unsigned>(value));
  } else if (value <= 0xFF) {
    WriteCoded(0xCC, static_cast<std::uint8_t>(value));
  } else if (value <= 0xFFFF) {
    WriteCoded(0xCD, static_cast<std::uint16_t>(value));
  } else if (value <= 0xFFFFFFFF) {
    WriteCoded(0xCE, static_cast<std::uint32_t>(value));
  } else {
    WriteCoded(0xCF, value);
  }
}

void JsonMsgPackWriter::WriteInteger(std::int64_t value) {
  if (value >= 0) {
    WriteUnsigned(static_cast<std::uint64_t>(value));
  } else if (value >= -32) {
    WriteByte(static_cast<unsigned>(value) & 0xFF);
  } else if (value >= std::numeric_limits<std::int8_t>::min()) {
    WriteCoded(0xD0, static_cast<std::uint8_t>(value));
  } else if (value >= std::numeric_limits<std::int16_t>::min()) {
    WriteCoded(0xD1, static_cast<std::uint16_t>(value));
  } else if (value >= std::numeric_limits<std::int32_t>::min()) {
    WriteCoded(0xD2, static_cast<std::uint32_t>(value));
  } else {
    WriteCoded(0xD3, static_cast<std::uint64_t>(value));
  }
}

void JsonMsgPackWriter::WriteReal(double value) {
  if (FitsIntoFloat(value)) {
    WriteCoded(0xCA, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
  } else {
    WriteCoded(0xCB, std::bit_cast<std::uint64_t>(value));
  }
}

void JsonMsgPackWriter::WriteString(std::string_view text) {
  if (text.size() < 32) {
    WriteByte(0xA0 + static_cast<unsigned>(text.size()));
  } else if (text.size() <= 0xFF) {
    WriteCoded(0xD9, static_cast<std::uint8_t>(text.size()));
  } else if (text.size() <= 0xFFFF) {
    WriteCoded(0xDA, static_cast<std::uint16_t>(text.size()));
  } else if (text.size() <= 0xFFFFFFFF) {
    WriteCoded(0xDB, static_cast<std::uint32_t>(text.size()));
  } else {
    fOk = false;
    return;
  }
  if (text.empty()) return;
  std::memcpy(MakeRoom(text.size()), text.data(), text.size());
  fCursor += text.size();
}

bool JsonMsgPackWriter::WriteHead(std::uint64_t count, unsigned fixed, unsigned code16) {
  if (count < 16) {
    WriteByte(fixed + static_cast<unsigned>(count));
  } else if (count <= 0xFFFF) {
    WriteCoded(code16, static_cast<std::uint16_t>(count));
  } else if (count <= 0xFFFFFFFF) {
    WriteCoded(code16 + 1, static_cast<std::uint32_t>(count));
  } else {
    fOk = false;
  }
  return fOk;
}

namespace {

// Writes a tree; the containers that are open stand in a list of their own.
class TreeWriter {
public:
  explicit TreeWriter(JsonMsgPackWriter& writer) : fWriter(writer) {}

  void Write(const JsonValue& root) {
    Begin(&root);
    while (!fOpen.empty()) Continue();
  }

private:
  struct Open {
    const JsonValue* container;
    std::uint64_t
        missing;  // CompiledObject: members that the head promises and that are not out yet
    std::size_t next = 0;  // of its items, entries or places
  };

  // Writes a value without children, or the head of a container.
  void Begin(const JsonValue* value) {
    if (!value) return fWriter.WriteNull();
    switch (value->GetType()) {
      case JsonValue::TypeNull:
        return fWriter.WriteNull();
      case JsonValue::TypeTrue:
        return fWriter.WriteBool(true);
      case JsonValue::TypeFalse:
        return fWriter.WriteBool(false);
      case JsonValue::TypeInteger:
        return WriteInteger(As<JsonInteger>(value));
      case JsonValue::TypeReal:
        return fWriter.WriteReal(As<JsonReal>(value).Value());
      case JsonValue::TypeString:
        return fWriter.WriteString(As<JsonString>(value).Text());
      case JsonValue::TypeArray:
        if (fWriter.BeginArray(As<JsonArray>(value).Size())) fOpen.push_back({value, 0});
        return;
      case JsonValue::TypeObject:
        if (fWriter.BeginMap(As<JsonObject>(value).Size())) fOpen.push_back({value, 0});
        return;
      case JsonValue::TypeCompiledObject: {
        const auto& object = As<JsonCompiledObject>(value);
        const std::uint64_t count = object.Schema() ? object.Count() : 0;
        if (fWriter.BeginMap(count) && count > 0) fOpen.push_back({value, count});
      }
    }
  }
  void WriteInteger(const JsonInteger& integer) {
    if (integer.IsUnsigned()) {
      fWriter.WriteUnsigned(static_cast<std::uint64_t>(integer.Value()));
    } else {
      fWriter.WriteInteger(integer.Value());
    }
  }

  // Writes children of the innermost container until it ends, or one of them is a container.
  void Continue() {
    const JsonValue* container = fOpen.back().container;
    switch (container->GetType()) {
      case JsonValue::TypeArray:
        return ContinueArray(As<JsonArray>(container));
      case JsonValue::TypeObject:
        return ContinueObject(As<JsonObject>(container));
      default:
        return ContinueCompiledObject(As<JsonCompiledObject>(container));
    }
  }
  void ContinueArray(const JsonArray& array) {
    const std::size_t depth = fOpen.size();
    for (const auto items = array.Items(); fOpen.back().next < items.size();) {
      Begin(items[fOpen.back().next++]);
      if (fOpen.size() != depth) return;
    }
    fOpen.pop_back();
  }
  void ContinueObject(const JsonObject& object) {
    const std::size_t depth = fOpen.size();
    for (const auto entries = object.Entries(); fOpen.back().next < entries.size();) {
      const JsonObject::Entry& entry = entries[fOpen.back().next++];
      if (!entry.IsLive()) continue;
      fWriter.WriteString(entry.Key());
      Begin(entry.Value());
      if (fOpen.size() != depth) return;
    }
    fOpen.pop_back();
  }
  void ContinueCompiledObject(const JsonCompiledObject& object) {
    const std::size_t depth = fOpen.size();
    const auto values = object.Values();
    while (fOpen.back().missing > 0 && fOpen.back().next < values.size()) {
      const std::size_t place = fOpen.back().next++;
      if (!values[place]) continue;
      --fOpen.back().missing;
      fWriter.WriteString(object.Schema()->Keys[place]);
      Begin(values[place]);
      if (fOpen.size() != depth) return;
    }
    // The head has told how many members there are, so that many have to come.
    for (; fOpen.back().missing > 0; --fOpen.back().missing) {
      fWriter.WriteString("");
      fWriter.WriteNull();
    }
    fOpen.pop_back();
  }

  template <class Node>
  static const Node& As(const JsonValue* value) {
    return *static_cast<const Node*>(value);
  }

  JsonMsgPackWriter& fWriter;
  std::vector<Open> fOpen;  // containers, the innermost last
};

}  // namespace

void JsonNull::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonTrue::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonFalse::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonInteger::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonReal::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonString::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonArray::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonObject::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}
void JsonCompiledObject::ToMsgPack(JsonMsgPackWriter& writer) const {
  TreeWriter(writer).Write(*this);
}

bool ToMsgPack(const JsonValue& value, std::string& out) {
  out.clear();
  JsonMsgPackWriter writer(out);
  value.ToMsgPack(writer);
  writer.Flush();
  return writer.Ok();
}

}  // namespace Tovrin::JSON
