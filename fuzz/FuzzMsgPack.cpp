// Fuzz target for the MsgPack reader and writer: any bytes are fair input, and what was read is
// written, read again and the same.
//
// The first byte picks the options. With clang it runs under libFuzzer (preset "fuzz"), otherwise
// ctest replays the corpus in fuzz/corpus/json_msgpack.

#include <cstddef>
#include <cstdint>
#include <string>

#include "Common/CUseCounted.h"
#include "fuzz/JsonInput.h"
#include "fuzz/Require.h"
#include "json/JsonMsgPack.h"

using namespace Tovrin::JSON;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!JsonInput::IsUsable(size)) return 0;
  JsonInput input(data, size);

  const CUsePtr<JsonValue> root(ParseMsgPack(input.bytes, &input.context, input.schema));
  Require(static_cast<bool>(root) == input.context.ErrorMessage.empty(),
          "a message means a failure");
  Require(input.context.Position <= input.bytes.size(), "the position lies in the input");
  if (!root) return 0;

  std::string bytes, again;
  Require(ToMsgPack(*root, bytes), "what was read fits the format");
  const CUsePtr<JsonValue> back(ParseMsgPack(bytes, &input.context, input.schema));
  Require(static_cast<bool>(back), "what was written can be read");
  Require(ToMsgPack(*back, again) && again == bytes, "the second writing is the first");
  return 0;
}
