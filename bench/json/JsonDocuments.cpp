#include "bench/json/JsonDocuments.h"

#include <fstream>
#include <iterator>

namespace {

std::string MadeText() {
  std::string text = "[";
  for (int i = 0; i < 5000; ++i) {
    text += i ? "," : "";
    text += R"({"id":)" + std::to_string(i * 7919) + R"(,"name":"item number )" +
            std::to_string(i) + R"(","tags":["a","bc","\u00e9"],"price":)" + std::to_string(i) +
            R"(.25,"nested":{"x":1,"y":true,"z":null}})";
  }
  return text + "]";
}

}  // namespace

std::vector<JsonDocument> JsonDocuments() {
  std::vector<JsonDocument> documents;
  for (const char* name : {"twitter", "citm_catalog", "canada"}) {
    std::ifstream file(std::string(TESSARIN_JSON_DATA) + "/" + name + ".json", std::ios::binary);
    if (file) documents.push_back({name, std::string(std::istreambuf_iterator<char>(file), {})});
  }
  if (documents.empty()) documents.push_back({"made", MadeText()});
  return documents;
}
