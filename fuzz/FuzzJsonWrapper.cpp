// Fuzz target for what a host hands to a wrapper as bytes: paths, and serialised values.
//
// An even first byte: the rest is what Deserialize reads. An odd one: the rest is a path, a NUL and
// the JSON text that the path leads into. With clang it runs under libFuzzer (preset "fuzz"),
// otherwise ctest replays the corpus in fuzz/corpus/json_wrapper.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/JsonInput.h"
#include "fuzz/Require.h"
#include "json/JSONWrapper.h"

using Tovrin::AutoRefPtr;
using Tovrin::IJSON;
using Tovrin::JSON::JSONWrapper;

namespace {

std::string Serialised(const JSONWrapper& json) {
  std::string bytes(json.SerializedSize(), '\0');
  Require(json.Serialize(bytes.data(), bytes.size() - 1) == -1, "one byte less is too little");
  Require(json.Serialize(bytes.data(), bytes.size()) == static_cast<std::int64_t>(bytes.size()),
          "the size that was told is enough");
  return bytes;
}

void CheckDeserialize(const std::string& bytes) {
  const auto json = JSONWrapper::CreateNull();
  const std::int64_t used = json->Deserialize(bytes.data(), bytes.size());
  if (used < 0) {
    Require(used == -1 && json->IsNull(), "a failure leaves the value");
    return;
  }
  Require(static_cast<std::size_t>(used) <= bytes.size(), "no more was used than there is");
  Require(json->GetErrorStatus() == IJSON::StatusOk, "a success has no message");

  const std::string first = Serialised(*json.get());
  const auto again = JSONWrapper::CreateNull();
  // Numbers just below a power of ten, and reals that are not finite, cannot be read back.
  if (again->Deserialize(first.data(), first.size()) < 0) return;
  Require(Serialised(*again.get()) == first, "what was serialised stays as it is");
}

// A path that leads somewhere leads there in two steps, too.
void CheckInTwoSteps(const JSONWrapper& json, const std::string& path, const std::string& found) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos || slash + 1 == path.size()) return;
  const std::string front = path.substr(0, slash);
  if (front.empty() || front == "/") return;  // there a slash is dropped, which is no empty piece
  const AutoRefPtr<IJSON> middle = json.FindNodePath(front.c_str());
  Require(static_cast<bool>(middle), "the front of a path leads somewhere");
  const AutoRefPtr<IJSON> end = middle->FindNodePath(path.c_str() + slash);
  Require(end && end->ToString() == found, "two steps lead where one does");
}

void CheckPath(std::string_view bytes) {
  const std::size_t nul = bytes.find('\0');
  if (nul == std::string_view::npos) return;
  const std::string path(bytes.substr(0, nul));
  const auto json = JSONWrapper::FromString(std::string(bytes.substr(nul + 1)), true);
  if (!json) return;

  const AutoRefPtr<IJSON> node = json->FindNodePath(path.c_str());
  Require(static_cast<bool>(node) == (json->GetErrorStatus() == IJSON::StatusOk),
          "a path that leads nowhere has a message");
  Require(static_cast<bool>(node) == json->GetErrorMessage().empty(), "and that has words");
  if (node) CheckInTwoSteps(*json.get(), path, node->ToString());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!JsonInput::IsUsable(size)) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 2 == 0) {
    CheckDeserialize(bytes);
  } else {
    CheckPath(bytes);
  }
  return 0;
}
