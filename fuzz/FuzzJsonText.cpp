// Fuzz target for the JSON text parser and serialiser: any bytes are fair input.
//
// The first byte picks the options. With clang it runs under libFuzzer (preset "fuzz"), otherwise
// ctest replays the corpus in fuzz/corpus/json_text.

#include <cstddef>
#include <cstdint>
#include <string>

#include "Common/CUseCounted.h"
#include "fuzz/JsonInput.h"
#include "fuzz/Require.h"
#include "json/JsonWriter.h"

using namespace Tovrin::JSON;

namespace {

void CheckTree(JsonValue& root) {
  const CUsePtr<JsonValue> copy(root.Clone());
  std::string text, copied, indented;
  WriteText(root, text, nullptr);
  WriteText(*copy, copied, nullptr);
  Require(text == copied, "a clone prints as its source");
  WriteText(root, indented, "  ");
  Require(indented.size() >= text.size(), "the indented form is the longer one");
}

// Leading zeros of whole numbers and the words of reals that are not finite cannot be read back, so
// only what can be is compared.
void CheckRoundTrip(const JsonValue& root) {
  std::string text;
  WriteText(root, text, nullptr);
  const CUsePtr<JsonValue> again(Parse(text));
  if (!again) return;
  std::string second;
  WriteText(*again, second, nullptr);
  const CUsePtr<JsonValue> third(Parse(second));
  Require(static_cast<bool>(third), "what was printed twice can be read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!JsonInput::IsUsable(size)) return 0;
  JsonInput input(data, size);
  const JsonParseContext& context = input.context;

  const CUsePtr<JsonValue> root(Parse(input.bytes, &input.context, input.schema));
  Require(static_cast<bool>(root) == context.ErrorMessage.empty(), "a message means a failure");
  Require(static_cast<bool>(root) == context.ParseSucceeded, "the context knows the outcome");
  Require(context.LineStart <= input.bytes.size(), "a line begins in the input");
  if (!root) return 0;
  Require(context.Position == input.bytes.size(), "all of the input was read");
  CheckTree(*root);
  CheckRoundTrip(*root);
  return 0;
}
