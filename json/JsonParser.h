#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"

namespace Tovrin::JSON {

// Options of a parse, and what it leaves behind. Can be used again without a Reset.
struct JsonParseContext {
  // Clears the outcome and leaves the options alone.
  void Reset();

  // Outcome. On failure Position is where reading stopped.
  std::uint64_t Position = 0;   // of the next byte to read
  std::uint64_t Line = 0;       // line ends passed, CR LF and LF CR counting once
  std::uint64_t LineStart = 0;  // offset of the first byte behind the last line end
  std::string ErrorMessage;     // empty unless parsing failed
  bool ParseSucceeded = false;
  bool InputIsValidUtf8 = false;  // by the check of the whole input

  // Options.
  // Contract: repeated keys are never refused. The flag makes a failed store an error: that of an
  // unknown key of a compiled object, or of a key that is not UTF-8.
  bool RejectDuplicateKeys = false;
  bool DetectMsgPack = false;  // input that begins with a MsgPack map or array head is read as such
  bool KeepKeyOrder = false;   // given to every JsonObject
  bool AssumeValidUtf8 = false;   // skips every check
  bool ValidateInputOnce = true;  // checks the whole input, and strings apart only when that fails
};

// The tree that a JSON text spells, with one reference for the caller, or null and a message in the
// context. Context and schema may be null. Nests of any depth are read. Reentrant.
JsonValue* Parse(const std::string& text, JsonParseContext* context = nullptr,
                 const JsonCompiledSchema* schema = nullptr);

// A parse for a root of one type; called like a function. Contract: a root of another type is null
// without a message, and ParseSucceeded stays true.
template <auto Read, auto ToType>
struct JsonTypedParse {
  auto* operator()(const std::string& bytes, JsonParseContext* context = nullptr,
                   const JsonCompiledSchema* schema = nullptr) const {
    JsonValue* root = Read(bytes, context, schema);
    auto* typed = ToType(root);
    if (root && !typed) root->Release();
    return typed;
  }
};

inline constexpr JsonTypedParse<&Parse, &ToArray> ParseArray;
inline constexpr JsonTypedParse<&Parse, &ToObject> ParseObject;
inline constexpr JsonTypedParse<&Parse, &ToCompiledObject> ParseCompiledObject;

// The number at the context's position, which moves behind it; null and a message where there is
// none. What follows the number is not looked at.
JsonValue* ReadNumber(const std::string& text, JsonParseContext& context);

// The double that a text begins with, as strtod reads it in the classic locale; 0.0 when there is
// none. Contract: what lies out of range, too small included, is plus infinity whatever its sign; a
// denormal number is no such case.
double ParseReal(std::string_view text);

// Whether lead bytes and continuation bytes fit together, and no more: overlong forms, surrogates
// and values beyond U+10FFFF pass. badOffset receives the offset of the sequence that does not, or
// the size.
bool IsValidUtf8(std::string_view text, std::size_t* badOffset = nullptr);

}  // namespace Tovrin::JSON
