// Speed of the JSON library on three public documents: bytes of JSON text a second in every row.
//
// Questions: does parsing into a tree keep up with RapidJSON's DOM under the same UTF-8 check, and
// is it three times as fast as nlohmann's? Does writing keep up with RapidJSON's Writer? Is MsgPack
// faster than text both ways? canada is nearly all reals: its text rows show what staying text
// saves, and its MsgPack rows write reals that are converted.
//
// Parsing leaves numbers as text until they are asked for, so the Sum rows parse and ask for every
// one.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Common/CUseCounted.h"
#include "bench/json/JsonDocuments.h"
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

using Tree = CUsePtr<JsonValue>;

void CountBytes(benchmark::State& state, const JsonDocument& document) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * document.text.size()));
}

// --- Ours ---

void Json_Parse(benchmark::State& state, const JsonDocument& document) {
  for (auto _ : state) {
    const Tree tree(Parse(document.text));
    benchmark::DoNotOptimize(tree.Get());
  }
  CountBytes(state, document);
}

double Sum(const JsonValue& value) {
  double sum = 0.0;
  if (const JsonArray* array = ToArray(const_cast<JsonValue*>(&value))) {
    for (const JsonValue* item : array->Items()) sum += Sum(*item);
  } else if (const JsonObject* object = ToObject(const_cast<JsonValue*>(&value))) {
    for (const JsonObject::Entry& entry : object->Entries()) sum += Sum(*entry.Value());
  } else if (value.GetType() == JsonValue::TypeInteger || value.GetType() == JsonValue::TypeReal) {
    value.AsDouble(sum);
  }
  return sum;
}

void Json_Sum(benchmark::State& state, const JsonDocument& document) {
  for (auto _ : state) {
    const Tree tree(Parse(document.text));
    benchmark::DoNotOptimize(Sum(*tree));
  }
  CountBytes(state, document);
}

void Json_Write(benchmark::State& state, const JsonDocument& document) {
  const Tree tree(Parse(document.text));
  for (auto _ : state) {
    std::string text;
    WriteText(*tree, text, nullptr);
    benchmark::DoNotOptimize(text.data());
  }
  CountBytes(state, document);
}

void Json_WriteMsgPack(benchmark::State& state, const JsonDocument& document) {
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

void Json_ParseMsgPack(benchmark::State& state, const JsonDocument& document) {
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
void RapidJson_Parse(benchmark::State& state, const JsonDocument& document) {
  for (auto _ : state) {
    rapidjson::Document tree;
    tree.Parse<rapidjson::kParseValidateEncodingFlag>(document.text.data(), document.text.size());
    benchmark::DoNotOptimize(&tree);
  }
  CountBytes(state, document);
}

double Sum(const rapidjson::Value& value) {
  double sum = 0.0;
  if (value.IsArray()) {
    for (const auto& item : value.GetArray()) sum += Sum(item);
  } else if (value.IsObject()) {
    for (const auto& member : value.GetObject()) sum += Sum(member.value);
  } else if (value.IsNumber()) {
    sum = value.GetDouble();
  }
  return sum;
}

void RapidJson_Sum(benchmark::State& state, const JsonDocument& document) {
  for (auto _ : state) {
    rapidjson::Document tree;
    tree.Parse<rapidjson::kParseValidateEncodingFlag>(document.text.data(), document.text.size());
    benchmark::DoNotOptimize(Sum(tree));
  }
  CountBytes(state, document);
}

void RapidJson_Write(benchmark::State& state, const JsonDocument& document) {
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
void Nlohmann_Parse(benchmark::State& state, const JsonDocument& document) {
  for (auto _ : state) {
    const auto tree = nlohmann::json::parse(document.text);
    benchmark::DoNotOptimize(&tree);
  }
  CountBytes(state, document);
}

void Nlohmann_Write(benchmark::State& state, const JsonDocument& document) {
  const auto tree = nlohmann::json::parse(document.text);
  for (auto _ : state) {
    const std::string text = tree.dump();
    benchmark::DoNotOptimize(text.data());
  }
  CountBytes(state, document);
}
#endif

void RegisterRows(const std::vector<JsonDocument>& documents) {
  const std::pair<const char*, void (*)(benchmark::State&, const JsonDocument&)> rows[] = {
      {"Json_Parse", Json_Parse},
      {"Json_Sum", Json_Sum},
      {"Json_Write", Json_Write},
      {"Json_ParseMsgPack", Json_ParseMsgPack},
      {"Json_WriteMsgPack", Json_WriteMsgPack},
#ifdef TESSARIN_HAS_RAPIDJSON
      {"RapidJson_Parse", RapidJson_Parse},
      {"RapidJson_Sum", RapidJson_Sum},
      {"RapidJson_Write", RapidJson_Write},
#endif
#ifdef TESSARIN_HAS_NLOHMANN
      {"Nlohmann_Parse", Nlohmann_Parse},
      {"Nlohmann_Write", Nlohmann_Write},
#endif
  };
  for (const JsonDocument& document : documents) {
    for (const auto& [name, run] : rows) {
      benchmark::RegisterBenchmark(
          (std::string(name) + "/" + document.name).c_str(),
          [run = run, &document](benchmark::State& state) { run(state, document); });
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<JsonDocument> documents = JsonDocuments();
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
