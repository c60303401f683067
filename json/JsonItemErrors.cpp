#include "json/JsonItemErrors.h"

namespace Tovrin::JSON {

void JsonItemErrors::Add(std::size_t index, std::string_view message) {
  if (message.empty() || IsFull()) return;
  ++fCount;

  std::string piece = fOut.empty() ? "" : ", ";
  piece += "Item '" + std::to_string(index + 1) + "' has error '";
  piece += message;
  piece += '\'';
  if (fOut.size() + piece.size() <= fMaxSize) fOut += piece;
}

}  // namespace Tovrin::JSON
