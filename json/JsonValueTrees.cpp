// Copying and comparing whole trees, each with a stack of its own.

#include <utility>
#include <vector>

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalars.h"

namespace Tovrin::JSON {

// Copies node by node: a container is copied as an empty shell first, and filled when its turn
// comes.
class JsonCopier {
public:
  static JsonValue* Copy(const JsonValue& root) {
    JsonCopier copier;
    JsonValue* copy = copier.CopyNode(&root);
    while (!copier.fShells.empty()) {
      const Shell shell = copier.fShells.back();
      copier.fShells.pop_back();
      copier.Fill(shell);
    }
    return copy;
  }

private:
  struct Shell {
    const JsonValue* source;
    JsonValue* copy;
  };

  JsonValue* CopyNode(const JsonValue* source) {
    if (!source) return nullptr;
    switch (source->GetType()) {
      case JsonValue::TypeString:
        return new JsonString(static_cast<const JsonString*>(source)->Text(), true);
      case JsonValue::TypeInteger:
        return Copied(*static_cast<const JsonInteger*>(source));
      case JsonValue::TypeReal:
        return Copied(*static_cast<const JsonReal*>(source));
      case JsonValue::TypeTrue:
        return new JsonTrue;
      case JsonValue::TypeFalse:
        return new JsonFalse;
      case JsonValue::TypeNull:
        return new JsonNull;
      case JsonValue::TypeArray:
        return CopyArray(static_cast<const JsonArray*>(source));
      case JsonValue::TypeObject:
        return Opened(source,
                      new JsonObject(static_cast<const JsonObject*>(source)->KeepKeyOrder()));
      case JsonValue::TypeCompiledObject:
        return Opened(source, new JsonCompiledObject(
                                  static_cast<const JsonCompiledObject*>(source)->Schema()));
    }
    return nullptr;
  }

  JsonValue* CopyArray(const JsonArray* source) {
    const std::string_view text = source->PackedText();
    if (text.empty()) return Opened(source, new JsonArray);
    return JsonArray::NewPacked(text, source->Head());
  }
  JsonValue* Opened(const JsonValue* source, JsonValue* copy) {
    fShells.push_back({source, copy});
    return copy;
  }
  static JsonValue* Copied(const JsonInteger& source) {
    if (!source.IsUnsigned()) return new JsonInteger(source.Value());
    return new JsonInteger(JsonInteger::Unsigned{}, static_cast<std::uint64_t>(source.Value()));
  }
  static JsonValue* Copied(const JsonReal& source) {
    if (!source.Text().empty()) return new JsonReal(source.Text(), source.Precision());
    return new JsonReal(source.Value(), source.Precision());
  }

  void Fill(const Shell& shell) {
    switch (shell.source->GetType()) {
      case JsonValue::TypeArray:
        return Fill(static_cast<const JsonArray&>(*shell.source),
                    static_cast<JsonArray&>(*shell.copy));
      case JsonValue::TypeObject:
        return Fill(static_cast<const JsonObject&>(*shell.source),
                    static_cast<JsonObject&>(*shell.copy));
      default:
        return Fill(static_cast<const JsonCompiledObject&>(*shell.source),
                    static_cast<JsonCompiledObject&>(*shell.copy));
    }
  }
  void Fill(const JsonArray& source, JsonArray& copy) {
    copy.Reserve(source.Size());
    JsonArray::Block* block = copy.UsableBlock();
    for (const JsonValue* item : source.Items()) block->Items()[block->size++] = CopyNode(item);
  }
  void Fill(const JsonObject& source, JsonObject& copy) {
    copy.Reserve(source.fCount);
    for (const JsonObject::Entry& entry : source.Entries()) {
      if (!entry.IsLive()) continue;
      JsonObject::Entry& added = copy.Append(entry.Key());
      added.fSequence = entry.fSequence;
      added.fKeyIsPlain = entry.fKeyIsPlain;
      added.fValue = CopyNode(entry.fValue);
    }
    copy.fNextSequence = source.fNextSequence;
  }
  void Fill(const JsonCompiledObject& source, JsonCompiledObject& copy) {
    copy.fValues.clear();
    copy.fValues.reserve(source.fValues.size());
    for (const JsonValue* value : source.fValues) copy.fValues.push_back(CopyNode(value));
    copy.fCount = source.fCount;
  }

  std::vector<Shell> fShells;  // copied, and still empty
};

namespace {

// Compares pair by pair; pairs of containers wait until their turn comes.
class Comparison {
public:
  bool AreEqual(const JsonValue* left, const JsonValue* right) {
    if (!Meet(left, right)) return false;
    while (!fPending.empty()) {
      const auto [a, b] = fPending.back();
      fPending.pop_back();
      if (!ChildrenMeet(*a, *b)) return false;
    }
    return true;
  }

private:
  // False when the two differ, as far as can be told without their children.
  bool Meet(const JsonValue* left, const JsonValue* right) {
    if (left == right) return true;
    if (!left || !right || left->GetType() != right->GetType()) return false;
    switch (left->GetType()) {
      case JsonValue::TypeTrue:
      case JsonValue::TypeFalse:
      case JsonValue::TypeNull:
        return true;
      case JsonValue::TypeString:
        return As<JsonString>(left).Text() == As<JsonString>(right).Text();
      case JsonValue::TypeInteger:
        return As<JsonInteger>(left).Value() == As<JsonInteger>(right).Value() &&
               As<JsonInteger>(left).IsUnsigned() == As<JsonInteger>(right).IsUnsigned();
      case JsonValue::TypeReal:
        return As<JsonReal>(left).Value() == As<JsonReal>(right).Value();
      default:
        fPending.emplace_back(left, right);
        return true;
    }
  }

  bool ChildrenMeet(const JsonValue& left, const JsonValue& right) {
    switch (left.GetType()) {
      case JsonValue::TypeArray:
        return ListsMeet(As<JsonArray>(&left).Items(), As<JsonArray>(&right).Items());
      case JsonValue::TypeObject:
        return MembersMeet(As<JsonObject>(&left), As<JsonObject>(&right));
      default: {
        const auto& a = As<JsonCompiledObject>(&left);
        const auto& b = As<JsonCompiledObject>(&right);
        return a.Schema() == b.Schema() && ListsMeet(a.Values(), b.Values());
      }
    }
  }
  bool ListsMeet(std::span<JsonValue* const> left, std::span<JsonValue* const> right) {
    if (left.size() != right.size()) return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
      if (!Meet(left[i], right[i])) return false;
    }
    return true;
  }
  bool MembersMeet(const JsonObject& left, const JsonObject& right) {
    if (left.Size() != right.Size()) return false;
    for (const JsonObject::Entry& entry : left.Entries()) {
      if (!entry.IsLive()) continue;
      if (!right.Has(entry.Key()) || !Meet(entry.Value(), right.ChildAt(entry.Key()))) return false;
    }
    return true;
  }

  template <class Node>
  static const Node& As(const JsonValue* value) {
    return *static_cast<const Node*>(value);
  }

  std::vector<std::pair<const JsonValue*, const JsonValue*>> fPending;
};

}  // namespace

JsonValue* JsonValue::Clone() const {
  return JsonCopier::Copy(*this);
}

bool JsonValue::operator==(const JsonValue& other) const {
  return Comparison().AreEqual(this, &other);
}

}  // namespace Tovrin::JSON
