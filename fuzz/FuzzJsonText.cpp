// Fuzz target for the JSON text parser and serialiser: any bytes are fair input.
//
// The first byte picks the options. With clang it runs under libFuzzer (preset "fuzz"), otherwise
// ctest replays the corpus in fuzz/corpus/json_text.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Common/CUseCounted.h"
#include "json/JsonParser.h"
#include "json/JsonWriter.h"

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
    root.AddKey("a", KeyCompiledObject, &child);
    root.AddKey("b", KeyObject);
    root.AddKey("c", KeyArray, &child);
    return root;
  }();
  return schema;
}

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
  if (size < 1 || size > 64 * 1024) return 0;  // longer inputs reach no new code

  JsonParseContext context;
  context.RejectDuplicateKeys = data[0] & 1;
  context.DetectMsgPack = data[0] & 2;
  context.KeepKeyOrder = data[0] & 4;
  context.AssumeValidUtf8 = data[0] & 8;
  context.ValidateInputOnce = data[0] & 16;
  const JsonCompiledSchema* schema = data[0] & 32 ? &Schema() : nullptr;
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);

  const CUsePtr<JsonValue> root(Parse(input, &context, schema));
  Require(static_cast<bool>(root) == context.ErrorMessage.empty(), "a message means a failure");
  Require(static_cast<bool>(root) == context.ParseSucceeded, "the context knows the outcome");
  Require(context.LineStart <= input.size(), "a line begins in the input");
  if (!root) return 0;
  Require(context.Position == input.size(), "all of the input was read");
  CheckTree(*root);
  CheckRoundTrip(*root);
  return 0;
}
