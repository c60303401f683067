#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "json/JsonParser.h"

// An input of the JSON targets: its first byte picks the options, the rest is read.
struct JsonInput {
  static constexpr std::size_t kMaxSize = 64 * 1024;  // longer inputs reach no new code
  static bool IsUsable(std::size_t size) { return size >= 1 && size <= kMaxSize; }

  JsonInput(const std::uint8_t* data, std::size_t size)
      : bytes(reinterpret_cast<const char*>(data) + 1, size - 1),
        schema(data[0] & 32 ? &Schema() : nullptr) {
    context.RejectDuplicateKeys = data[0] & 1;
    context.DetectMsgPack = data[0] & 2;
    context.KeepKeyOrder = data[0] & 4;
    context.AssumeValidUtf8 = data[0] & 8;
    context.ValidateInputOnce = data[0] & 16;
  }

  std::string bytes;
  Tovrin::JSON::JsonParseContext context;
  const Tovrin::JSON::JsonCompiledSchema* schema;  // or null

private:
  static const Tovrin::JSON::JsonCompiledSchema& Schema() {
    using namespace Tovrin::JSON;
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
};
