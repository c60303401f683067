#pragma once

#include "host/IUserDefinedType.h"
#include "host/InterfaceImpl.h"
#include "json/JSONWrapper.h"

namespace RefHost {

// The rule language's JSON value, as this host has it.
//
// The host is a binary of its own, with memory of its own: it takes no tree of a module's by
// pointer and gives none away, so that values cross as text.
class CHostJson final : public Tovrin::InterfaceImpl<Tovrin::IUserDefinedType> {
public:
  using Value = Tovrin::AutoRefPtr<Tovrin::JSON::JSONWrapper>;

  CHostJson(Tovrin::TypeId typeId, Value value) : fTypeId(typeId), fValue(std::move(value)) {}
  // An empty object, for the type table.
  static Tovrin::IUserDefinedType* Create(std::uint32_t typeId);

private:
  const char* Interface_GetName() const override { return "JSON"; }
  Tovrin::IUserDefinedType* Interface_Clone() const override;
  Tovrin::TypeId Interface_GetType() const override { return fTypeId; }
  bool Interface_LessThan(const Tovrin::IUserDefinedType* other) const override;
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON* json) override;
  Tovrin::IJSON* Interface_Serialize() const override;
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }

  const Tovrin::TypeId fTypeId;
  Value fValue;  // never empty
};

}  // namespace RefHost
