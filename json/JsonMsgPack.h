#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/JsonParser.h"

namespace Tovrin::JSON {

// Where the nodes write their MsgPack form: a list of chunks, so that growing output is not moved
// before the end. Flush, or the destructor, appends all of it to the target, or nothing: where the
// target cannot grow, Flush throws, and the destructor goes in silence.
//
// A length that the format cannot hold makes Ok false for good, and then nothing is delivered.
class JsonMsgPackWriter {
public:
  static constexpr std::size_t kFirstChunkSize = 1000;

  explicit JsonMsgPackWriter(std::string& target);
  ~JsonMsgPackWriter();
  JsonMsgPackWriter(const JsonMsgPackWriter&) = delete;
  JsonMsgPackWriter& operator=(const JsonMsgPackWriter&) = delete;

  void WriteNull() { WriteByte(0xC0); }
  void WriteBool(bool value) { WriteByte(value ? 0xC3 : 0xC2); }
  void WriteInteger(std::int64_t value);
  void WriteUnsigned(std::uint64_t value);
  void WriteReal(double value);
  void WriteString(std::string_view text);
  // Heads of containers: false when the count is too large, and the members are left out then.
  bool BeginArray(std::uint64_t count) { return WriteHead(count, 0x90, 0xDC); }
  bool BeginMap(std::uint64_t count) { return WriteHead(count, 0x80, 0xDE); }

  void Flush();
  bool Ok() const { return fOk; }

private:
  void WriteByte(unsigned code) { *MakeRoom(1) = static_cast<char>(code), ++fCursor; }
  template <class Number>
  void WriteCoded(unsigned code, Number value);
  bool WriteHead(std::uint64_t count, unsigned fixed, unsigned code16);

  char* MakeRoom(std::size_t need) {
    if (static_cast<std::size_t>(fEnd - fCursor) < need) NextChunk(need);
    return fCursor;
  }
  void NextChunk(std::size_t need);

  struct FreeChunk {
    void operator()(char* chunk) const;
  };
  using Chunk = std::unique_ptr<char, FreeChunk>;
  static Chunk NewChunk(std::size_t size);

  std::string& fTarget;
  std::vector<std::pair<Chunk, std::size_t>> fFinished;  // full chunks in order, with their lengths
  Chunk fStart;
  char* fCursor = nullptr;
  char* fEnd = nullptr;
  std::uint64_t fChunkSize = kFirstChunkSize;  // of the chunk at fStart
  std::uint64_t fFinishedBytes = 0;            // total length of fFinished
  bool fOk = true;
};

// The MsgPack form of the value in out, which is cleared first. False when something in it is too
// large for the format; out is empty then. Reals that are still text are converted for good.
bool ToMsgPack(const JsonValue& value, std::string& out);

// As Parse, for MsgPack bytes. Binary data and extensions are refused.
JsonValue* ParseMsgPack(const std::string& bytes, JsonParseContext* context = nullptr,
                        const JsonCompiledSchema* schema = nullptr);
inline constexpr JsonTypedParse<&ParseMsgPack, &ToArray> ParseMsgPackArray;
inline constexpr JsonTypedParse<&ParseMsgPack, &ToObject> ParseMsgPackObject;
inline constexpr JsonTypedParse<&ParseMsgPack, &ToCompiledObject> ParseMsgPackCompiledObject;

}  // namespace Tovrin::JSON
