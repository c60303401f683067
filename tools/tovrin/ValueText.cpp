#include "tools/tovrin/ValueText.h"

#include <fmt/core.h>

#include <cmath>
#include <iterator>

#include "Common/Utf8.h"
#include "host/IUserDefinedType.h"
#include "json/JsonWriter.h"
#include "tools/tovrin/CEvaluation.h"
#include "tools/tovrin/Failure.h"
#include "tools/tovrin/ForeignCall.h"

using Tovrin::AutoRefPtr;
using Tovrin::IVariant;

namespace RefHost {
namespace {

class CValueWriter {
public:
  explicit CValueWriter(const CTransaction& transaction) : fTransaction(transaction) {}

  // Containers hold no containers, so this goes two levels deep and no further.
  void Write(IVariant& value);
  std::string Take() { return std::move(fOut); }

private:
  void WriteNull() { fOut += "null"; }
  void WriteElement(const AutoRefPtr<IVariant>& element) {
    element ? Write(*element.get()) : WriteNull();
  }
  void WriteVector(const Tovrin::IVectorGeneric& vector);
  void WriteMap(const Tovrin::IMapGeneric& map);
  void WriteData(const Tovrin::IDataRef& data);
  void WriteObject(IVariant& value);
  void WriteObjectText(IVariant& value);

  const CTransaction& fTransaction;
  std::string fOut;
};

void CValueWriter::Write(IVariant& value) {
  const Tovrin::TypeId type = value.GetType();
  if (type == Tovrin::kTypeBoolean) {
    fOut += value.GetBoolean() ? "true" : "false";
  } else if (type == Tovrin::kTypeNumber) {
    AppendJsonNumber(fOut, value.GetNumber());
  } else if (type == Tovrin::kTypeString) {
    AppendJsonText(fOut, {value.GetString(), value.GetStringSize()});
  } else if (const auto vector = value.GetVector()) {
    WriteVector(*vector.get());
  } else if (const auto map = value.GetMap()) {
    WriteMap(*map.get());
  } else if (const auto data = value.GetData()) {
    WriteData(*data.get());
  } else if (value.GetUserDefined()) {
    WriteObject(value);
  } else {
    WriteNull();
  }
}

void CValueWriter::WriteVector(const Tovrin::IVectorGeneric& vector) {
  fOut += '[';
  for (std::size_t i = 0; i < vector.GetSize(); ++i) {
    if (i != 0) fOut += ',';
    WriteElement(vector.Get(i));
  }
  fOut += ']';
}

void CValueWriter::WriteMap(const Tovrin::IMapGeneric& map) {
  fOut += '{';
  for (std::size_t i = 0; i < map.GetSize(); ++i) {
    if (i != 0) fOut += ',';
    std::string key;
    if (const auto variant = map.GetKeyAt(i)) {
      if (variant->GetType() == Tovrin::kTypeNumber) {
        AppendJsonNumber(key, variant->GetNumber());
      } else {
        key.assign(variant->GetString(), variant->GetStringSize());
      }
    }
    AppendJsonText(fOut, key);
    fOut += ':';
    WriteElement(map.GetValueAt(i));
  }
  fOut += '}';
}

void CValueWriter::WriteData(const Tovrin::IDataRef& data) {
  std::string bytes(data.GetSize(), '\0');
  bytes.resize(data.Read(bytes.data(), bytes.size(), 0));
  AppendJsonText(fOut, bytes);
}

void CValueWriter::WriteObject(IVariant& value) {
  const std::string title = fTransaction.types->TitleOf(value.GetType());
  const std::string serialised = CallForeign(
      [&] {
        std::string text;
        value.GetUserDefined()->ToString(text, fTransaction.context.get());
        return text;
      },
      [&](const std::string& words) { return ExceptionFailure(title, words); });
  if (serialised.empty()) return WriteObjectText(value);
  fOut += serialised;
}

// The type's name without dots is what its functions are called by: "Tessarin.List" has
// "TessarinList.ToString". A second argument is a separator, and the empty one means the usual.
void CValueWriter::WriteObjectText(IVariant& value) {
  std::string name = fTransaction.types->NameOf(value.GetType());
  std::erase(name, '.');
  name += ".ToString";

  for (const char* arguments : {"", ",STRING"}) {
    const BoundFunction* function = fTransaction.functions->FindExact(
        name, "STRING", fTransaction.types->NameOf(value.GetType()) + arguments);
    if (function == nullptr) continue;
    CScope scope;
    scope.Define("value", value.GetType()).value = Tovrin::Share(&value);
    Expression call{Expression::Kind::Call, {}, name, 0, false, {}};
    call.parts.push_back({Expression::Kind::Variable, {}, "value", 0, false, {}});
    if (function->arguments.size() == 2) {
      call.parts.push_back({Expression::Kind::Text, {}, {}, 0, false, {}});
    }
    return Write(*CompileValue(call, scope, fTransaction)->Evaluate());
  }
  WriteNull();
}

// The text with a replacement character for each sequence that is no UTF-8.
std::string WithReplacements(std::string_view text) {
  constexpr char32_t kReplacement = 0xFFFD;
  std::string out;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) {
    const char32_t code = DecodeUtf8(at, end);
    AppendUtf8(code == kIllFormed ? kReplacement : code, out);
  }
  return out;
}

}  // namespace

void AppendJsonText(std::string& out, std::string_view text) {
  out += '"';
  Tovrin::JSON::WriteEscaped(WithReplacements(text), out);
  out += '"';
}

void AppendJsonNumber(std::string& out, double number) {
  if (!std::isfinite(number)) {
    out += "null";
  } else if (number == 0) {
    out += '0';  // also minus zero
  } else if (std::trunc(number) == number) {
    fmt::format_to(std::back_inserter(out), "{:.0f}", number);
  } else {
    fmt::format_to(std::back_inserter(out), "{}", number);
  }
}

std::string JsonOf(IVariant& value, const CTransaction& transaction) {
  CValueWriter writer(transaction);
  writer.Write(value);
  return writer.Take();
}

}  // namespace RefHost
