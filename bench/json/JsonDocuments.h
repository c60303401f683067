#pragma once

#include <string>
#include <vector>

struct JsonDocument {
  std::string name;
  std::string text;
};

// The public documents that the JSON benches run over. Where they are not there, one of our own
// making stands in for them.
std::vector<JsonDocument> JsonDocuments();
