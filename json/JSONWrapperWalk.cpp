#include <algorithm>
#include <iterator>
#include <string>

#include "host/IContext.h"
#include "json/JSONText.h"
#include "json/JSONWrapper.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonItemErrors.h"

namespace Tovrin::JSON {
namespace {

// Calls visit(index, key, child) for each child of a container until it answers false, with a
// wrapper that shares the child. False when it did, and where there is nothing to walk.
template <class Visit>
bool Walk(JsonValue* root, Visit visit) {
  bool goesOn = true;
  std::size_t index = 0;
  const auto show = [&](const std::string& key, JsonValue* child) {
    if (!goesOn) return;
    const AutoRefPtr<JSONWrapper> wrapper(new JSONWrapper(ShareUse(child)));
    goesOn = visit(index++, key.c_str(), wrapper.get());
  };

  if (const JsonArray* array = ToArray(root)) {
    array->ForEach([&](std::size_t at, JsonValue* child) { show(std::to_string(at), child); });
  } else if (const JsonObject* object = ToObject(root)) {
    object->ForEach(show);
  } else if (const JsonCompiledObject* compiled = ToCompiledObject(root)) {
    compiled->ForEach(
        [&](std::size_t at, JsonValue* child) { show(compiled->Schema()->Keys[at], child); });
  } else {
    return false;
  }
  return goesOn;
}

}  // namespace

bool JSONWrapper::Interface_ForEach(ForEachFn fn, void* user) const {
  if (!fData || !fn) return false;
  const CUsePtr<JsonValue> root = fData->Root;  // the callback may give the wrapper another one
  return Walk(root.Get(), [&](std::size_t, const char* key, const IJSON* child) {
    return fn(key, child, user);
  });
}

bool JSONWrapper::Interface_ForEach(ForEachErrorFn fn, void* user, char* errors,
                                    std::size_t size) const {
  constexpr std::size_t kItemSize = 1024;
  if (!fData || !fn) return false;

  const CUsePtr<JsonValue> root = fData->Root;
  const bool isWanted = errors && size > 0;
  std::string text;
  JsonItemErrors gathered(text, isWanted ? size - 1 : 0, JsonItemErrors::kNoLimit);
  const bool answer = Walk(root.Get(), [&](std::size_t index, const char* key, const IJSON* child) {
    char error[kItemSize] = {};
    const bool goesOn = fn(key, child, user, error, sizeof error);
    if (isWanted) gathered.Add(index, {error, std::find(error, std::end(error), '\0')});
    return goesOn;
  });
  GiveText(text, errors, size);
  return answer;
}

bool JSONWrapper::Interface_ForEach(ForEachFn fn, void* user, IContext* context) const {
  if (!fData || !fn) return false;

  const CUsePtr<JsonValue> root = fData->Root;
  bool answer = root->IsContainer();
  std::string text;
  JsonItemErrors gathered(text);
  Walk(root.Get(), [&](std::size_t index, const char* key, const IJSON* child) {
    if (!fn(key, child, user)) answer = false;
    // Contract: the context keeps its error, so that it counts again for each item that follows.
    if (context && context->HasError()) gathered.Add(index, context->GetErrorMessage());
    return !gathered.IsFull();
  });
  if (context && !text.empty()) {
    context->TriggerErrorHandler(ErrorSeverity::Severity2, "Tovrin", "Error.Tovrin.FunctionError",
                                 text.c_str());
  }
  return answer;
}

}  // namespace Tovrin::JSON
