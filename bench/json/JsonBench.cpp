// Speed of the JSON library on three public documents: bytes of JSON text a second in every row.
//
// Questions: does parsing into a tree keep up with RapidJSON's DOM under the same UTF-8 check, and
// is it three times as fast as nlohmann's? Does writing keep up with RapidJSON's Writer? Is MsgPack
// faster than text both ways? canada is nearly all reals: its text rows show what staying text
// saves, and its MsgPack rows write reals that are converted.
//
// Where the documents are not there, one of the bench's own making stands in for them.

#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Common/CUseCounted.h"
#include "json/JsonMsgPack.h"
#include "json/JsonParser.h"
#include "json/JsonWriter.h"

#ifdef TESSARIN_HAS_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#ifdef TESSARIN_HAS_NLOHMANN
#include <nlohmann/json.hpp>
#endif

using namespace Tovrin::JSON;

namespace {

struct Document {
  std::string name;
  std::string text;
};

using Tree = CUsePtr<JsonValue>;

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

std::vector<Document> Documents() {
  std::vector<Document> documents;
  for (const char* name : {"twitter", "citm_catalog", "canada"}) {
    std::ifstream file(std::string(TESSARIN_JSON_DATA) + "/" + name + ".json", std::ios::binary);
    if (file) documents.push_back({name, std::string(std::istreambuf_iterator<char>(file), {})});
  }
  if (documents.empty()) documents.push_back({"made", MadeText()});
  return documents;
}

void CountBytes(benchmark::State& state, const Document& document) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * document.text.size()));
}

// --- Ours ---

void Json_Parse(benchmark::State& state, const Document& document) {
  for (auto _ : state) {
    const Tree tree(Parse(document.text));
    benchmark::DoNotOptimize(tree.Get());
  }
  CountBytes(state, document);
}

void Json_Write(benchmark::State& state, const Document& document) {
  const Tree tree(Parse(document.text));
  for (auto _ : state) {
    std::string text;
    WriteText(*tree, text, nullptr);
    benchmark::DoNotOptimize(text.data());
  }
  CountBytes(state, document);
}

void Json_WriteMsgPack(benchmark::State& state, const Document& document) {
  const Tree tree(Parse(document.text));
  std::string bytes;
  ToMsgPack(*tree, bytes);  // converts the reals
  for (auto _ : state) {
    std::string written;
    ToMsgPack(*tree, written);
    benchmark::DoNotOptimize(written.data());
  }
  CountBytes(state, document);
}

void Json_ParseMsgPack(benchmark::State& state, const Document& document) {
  const Tree tree(Parse(document.text));
  std::string bytes;
  ToMsgPack(*tree, bytes);
  for (auto _ : state) {
    const Tree read(ParseMsgPack(bytes));
    benchmark::DoNotOptimize(read.Get());
  }
  CountBytes(state, document);
}

// --- Peers ---

#ifdef TESSARIN_HAS_RAPIDJSON
void RapidJson_Parse(benchmark::State& state, const Document& document) {
  for (auto _ : state) {
    rapidjson::Document tree;
    tree.Parse<rapidjson::kParseValidateEncodingFlag>(document.text.data(), document.text.size());
    benchmark::DoNotOptimize(&tree);
  }
  CountBytes(state, document);
}

void RapidJson_Write(benchmark::State& state, const Document& document) {
  rapidjson::Document tree;
  tree.Parse(document.text.data(), document.text.size());
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    tree.Accept(writer);
    benchmark::DoNotOptimize(buffer.GetString());
  }
  CountBytes(state, document);
}
#endif

#ifdef TESSARIN_HAS_NLOHMANN
void Nlohmann_Parse(benchmark::State& state, const Document& document) {
  for (auto _ : state) {
    const auto tree = nlohmann::json::parse(document.text);
    benchmark::DoNotOptimize(&tree);
  }
  CountBytes(state, document);
}

void Nlohmann_Write(benchmark::State& state, const Document& document) {
  const auto tree = nlohmann::json::parse(document.text);
  for (auto _ : state) {
    const std::string text = tree.dump();
    benchmark::DoNotOptimize(text.data());
  }
  CountBytes(state, document);
}
#endif

void RegisterRows(const std::vector<Document>& documents) {
  const std::pair<const char*, void (*)(benchmark::State&, const Document&)> rows[] = {
      {"Json_Parse", Json_Parse},
      {"Json_Write", Json_Write},
      {"Json_ParseMsgPack", Json_ParseMsgPack},
      {"Json_WriteMsgPack", Json_WriteMsgPack},
#ifdef TESSARIN_HAS_RAPIDJSON
      {"RapidJson_Parse", RapidJson_Parse},
      {"RapidJson_Write", RapidJson_Write},
#endif
#ifdef TESSARIN_HAS_NLOHMANN
      {"Nlohmann_Parse", Nlohmann_Parse},
      {"Nlohmann_Write", Nlohmann_Write},
#endif
  };
  for (const Document& document : documents) {
    for (const auto& [name, run] : rows) {
      benchmark::RegisterBenchmark(
          (std::string(name) + "/" + document.name).c_str(),
          [run = run, &document](benchmark::State& state) { run(state, document); });
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<Document> documents = Documents();
  RegisterRows(documents);
  benchmark::Initialize(&argc, argv);
#ifndef TESSARIN_HAS_RAPIDJSON
  benchmark::AddCustomContext("RapidJSON", "missing");
#endif
#ifndef TESSARIN_HAS_NLOHMANN
  benchmark::AddCustomContext("nlohmann", "missing");
#endif
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
