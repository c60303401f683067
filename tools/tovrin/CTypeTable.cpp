#include "tools/tovrin/CTypeTable.h"

namespace RefHost {

CTypeTable::CTypeTable() {
  fNames.emplace_back();
  for (const char* name : {"BOOLEAN", "NUMBER", "STRING", "DATAREF", "STREAM"}) Add(name);
}

Tovrin::TypeId CTypeTable::Add(const std::string& name, Factory factory) {
  if (name.empty() || Find(name) != 0) return 0;

  const auto id = static_cast<Tovrin::TypeId>(fNames.size());
  for (const std::string& form :
       {name, "VECTOR<" + name + ">", "MAP<NUMBER," + name + ">", "MAP<STRING," + name + ">"}) {
    fIds.emplace(form, static_cast<Tovrin::TypeId>(fNames.size()));
    fNames.push_back(form);
  }
  if (factory != nullptr) fFactories.emplace(id, factory);
  return id;
}

Tovrin::TypeId CTypeTable::Find(const std::string& name) const {
  const auto found = fIds.find(name);
  return found != fIds.end() ? found->second : 0;
}

const std::string& CTypeTable::NameOf(Tovrin::TypeId id) const {
  return id < fNames.size() ? fNames[id] : fNames.front();
}

std::string CTypeTable::TitleOf(Tovrin::TypeId id) const {
  return "type '" + NameOf(id) + "'";
}

CTypeTable::Factory CTypeTable::FactoryOf(Tovrin::TypeId id) const {
  const auto found = fFactories.find(id);
  return found != fFactories.end() ? found->second : nullptr;
}

}  // namespace RefHost
