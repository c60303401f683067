// Fuzz target for the MsgPack reader and writer: any bytes are fair input, and what was read is
// written, read again and the same.
//
// The first byte picks the options. With clang it runs under libFuzzer (preset "fuzz"), otherwise
// ctest replays the corpus in fuzz/corpus/json_msgpack.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Common/CUseCounted.h"
#include "json/JsonMsgPack.h"

using namespace Tovrin::JSON;

namespace {

// Ends the process where a sanitizer or libFuzzer sees it, naming the property that broke.
void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "property failed: %s\n", property);
  std::abort();
}

const JsonCompiledSchema& Schema() {
  static const JsonCompiledSchema schema = [] {
    static JsonCompiledSchema child;
    child.AddKey("x", KeyNumber);
    JsonCompiledSchema root;
    root.AddKey("a", KeyCompiledObject | KeyNumber, &child);
    root.AddKey("b", KeyObject, &child);
    root.AddKey("c", KeyArray | KeyRequired, &child);
    return root;
  }();
  return schema;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 64 * 1024) return 0;  // longer inputs reach no new code

  JsonParseContext context;
  context.RejectDuplicateKeys = data[0] & 1;
  context.KeepKeyOrder = data[0] & 2;
  context.AssumeValidUtf8 = data[0] & 4;
  const JsonCompiledSchema* schema = data[0] & 8 ? &Schema() : nullptr;
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);

  const CUsePtr<JsonValue> root(ParseMsgPack(input, &context, schema));
  Require(static_cast<bool>(root) == context.ErrorMessage.empty(), "a message means a failure");
  Require(context.Position <= input.size(), "the position lies in the input");
  if (!root) return 0;

  std::string bytes, again;
  Require(ToMsgPack(*root, bytes), "what was read fits the format");
  const CUsePtr<JsonValue> back(ParseMsgPack(bytes, &context, schema));
  Require(static_cast<bool>(back), "what was written can be read");
  Require(ToMsgPack(*back, again) && again == bytes, "the second writing is the first");
  return 0;
}
