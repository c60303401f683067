#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>

#include "host/IUserDefinedType.h"

namespace RefHost {

// The types that the host knows, built-in and brought by modules: names to ids and back. Each
// scalar comes with its three container forms, "VECTOR<N>", "MAP<NUMBER,N>" and "MAP<STRING,N>".
//
// Grows while modules register; after that any thread may read. Names keep their addresses.
class CTypeTable {
public:
  CTypeTable();  // with the built-in types

  // Makes an object of the type whose id it is given; the caller owns the reference.
  using Factory = Tovrin::IUserDefinedType* (*)(std::uint32_t typeId);

  // The new id of a type, which those of its containers follow; 0 when the name is taken.
  Tovrin::TypeId Add(const std::string& name, Factory factory = nullptr);

  Tovrin::TypeId Find(const std::string& name) const;  // 0 when unknown
  const std::string& NameOf(Tovrin::TypeId id) const;  // empty when unknown
  std::string TitleOf(Tovrin::TypeId id) const;        // "type 'Box'", as failures call it
  Factory FactoryOf(Tovrin::TypeId id) const;          // null when there is none

private:
  std::deque<std::string> fNames;  // by id; the first is of no type
  std::unordered_map<std::string, Tovrin::TypeId> fIds;
  std::unordered_map<Tovrin::TypeId, Factory> fFactories;
};

// The type of a container's elements, or the type itself where it is none.
constexpr Tovrin::TypeId ScalarOf(Tovrin::TypeId id) {
  return id == 0 ? 0 : ((id - 1) & ~Tovrin::TypeId{3}) + 1;
}
constexpr bool IsUserDefined(Tovrin::TypeId id) {
  return id >= Tovrin::kFirstUserType;
}

}  // namespace RefHost
