#include "tools/tovrin/CFunctionTable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "host/ImportedFunctionBridge.h"

namespace RefHost {
namespace {

std::size_t FittingArguments(const BoundFunction& function,
                             const std::vector<Tovrin::TypeId>& arguments) {
  const auto [wanted, given] = std::mismatch(function.arguments.begin(), function.arguments.end(),
                                             arguments.begin(), arguments.end());
  return static_cast<std::size_t>(wanted - function.arguments.begin());
}

std::string_view KindOf(const BoundFunction& function) {
  return function.IsProcedure() ? "procedure" : "function";
}

}  // namespace

std::string BoundFunction::Title() const {
  return fmt::format("{} '{}'", KindOf(*this), declaration.name);
}

std::string BoundFunction::WordsFor(Tovrin::FunctionStatus status) const {
  return Tovrin::StatusMessage(status, KindOf(*this), declaration.name);
}

BoundFunction Bind(const CTypeTable& types, DefinitionEntry declaration) {
  const auto typeOf = [&](const std::string& name) {
    const Tovrin::TypeId type = types.Find(name);
    if (type == 0) {
      throw CDefinitionError(
          fmt::format("unknown type '{}' in '{}'", name, declaration.Signature()));
    }
    return type;
  };
  BoundFunction function;
  if (!declaration.result.empty()) function.result = typeOf(declaration.result);
  for (const std::string& argument : declaration.arguments) {
    function.arguments.push_back(typeOf(argument));
  }
  function.declaration = std::move(declaration);
  return function;
}

bool CFunctionTable::Add(BoundFunction function) {
  auto& overloads = fByName[function.declaration.name];
  const auto same = [&](const BoundFunction& other) {
    return other.arguments == function.arguments;
  };
  if (std::any_of(overloads.begin(), overloads.end(), same)) return false;
  overloads.push_back(std::move(function));
  return true;
}

void CFunctionTable::Remove(const std::vector<const Tovrin::IModuleInfo*>& infos) {
  for (auto& [name, overloads] : fByName) {
    std::erase_if(overloads, [&](const BoundFunction& function) {
      return std::find(infos.begin(), infos.end(), function.info) != infos.end();
    });
  }
  std::erase_if(fByName, [](const auto& entry) { return entry.second.empty(); });
}

bool CFunctionTable::Has(const std::string& name) const {
  return fByName.contains(name);
}

const BoundFunction* CFunctionTable::Choose(const std::string& name,
                                            const std::vector<Tovrin::TypeId>& arguments) const {
  const auto found = fByName.find(name);
  if (found == fByName.end()) return nullptr;

  const BoundFunction* best = nullptr;
  std::size_t bestCount = 0;
  for (const BoundFunction& function : found->second) {
    if (function.arguments == arguments) return &function;
    const std::size_t count = FittingArguments(function, arguments);
    if (best == nullptr || count > bestCount) {
      best = &function;
      bestCount = count;
    }
  }
  return best;
}

const BoundFunction* CFunctionTable::FindExact(std::string_view name, std::string_view result,
                                               std::string_view arguments) const {
  const auto found = fByName.find(std::string(name));
  if (found == fByName.end()) return nullptr;
  for (const BoundFunction& function : found->second) {
    const DefinitionEntry& entry = function.declaration;
    if (entry.result != result) continue;
    if (fmt::format("{}", fmt::join(entry.arguments, ",")) == arguments) return &function;
  }
  return nullptr;
}

}  // namespace RefHost
