#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "host/IContext.h"
#include "host/IDataRef.h"
#include "host/IMapGeneric.h"
#include "host/IStream.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "host/IVectorGeneric.h"
#include "host/InterfaceImpl.h"
#include "tools/tovrin/CTypeTable.h"

namespace RefHost {

// The host's variant: one value of any type of the type table, containers and user-defined types
// included. Objects and containers are shared, not copied.
//
// Each Assign operation also gives the variant that value's type, so a variant can be used again
// for another one. Text keeps its buffer from one assignment to the next.
//
// Invariant: fValue holds what fType says, or nothing. Nothing is what a new variant of a
// user-defined type holds, and what Reset leaves behind; it reads as false, 0, empty or null.
// Reading from several threads is safe, writing is for one.
class CHostVariant final : public Tovrin::InterfaceImpl<Tovrin::IVariant> {
public:
  // A value of that type: false, 0, the empty text, an empty container, data or stream.
  static Tovrin::AutoRefPtr<CHostVariant> Create(std::shared_ptr<const CTypeTable> types,
                                                 Tovrin::TypeId type);

  // Nothing, of a type; the way to use one variant for one result after another.
  void Reset(Tovrin::TypeId type);
  void SetText(std::string_view text);

private:
  explicit CHostVariant(std::shared_ptr<const CTypeTable> types) : fTypes(std::move(types)) {}

  template <class Held>
  const Held* Get() const {
    return std::get_if<Held>(&fValue);
  }
  template <class Interface>
  Interface* GetObject() const;  // one more reference for the caller, or null
  template <class Interface>
  void SetObject(Interface* object, Tovrin::TypeId type);

  Tovrin::TypeId Interface_GetType() const override { return fType; }
  const char* Interface_GetTypeAsString(Tovrin::IContext* context) const override;
  bool Interface_GetBoolean() const override;
  double Interface_GetNumber() const override;
  const char* Interface_GetString() const override;
  std::size_t Interface_GetStringSize() const override;
  Tovrin::IDataRef* Interface_GetData() const override;
  Tovrin::IStream* Interface_GetStream() const override;
  Tovrin::IUserDefinedType* Interface_GetUserDefined() const override;
  std::size_t Interface_GetVectorSize() const override;
  const Tovrin::IVectorGeneric* Interface_GetVector() const override;
  std::size_t Interface_GetMapSize() const override;
  const Tovrin::IMapGeneric* Interface_GetMap() const override;
  std::uint8_t Interface_IsEqual(const Tovrin::IVariant* other) const override;
  void Interface_Assign(const Tovrin::IVariant* other) override;
  void Interface_AssignBoolean(bool value) override;
  void Interface_AssignNumber(double value) override;
  void Interface_AssignString(const char* bytes, std::size_t size) override;
  void Interface_AssignData(Tovrin::IDataRef* data) override;
  void Interface_AssignStream(Tovrin::IStream* stream) override;
  void Interface_SetUserDefined(Tovrin::IUserDefinedType* object) override;
  void Interface_AssignVector(const Tovrin::IVectorGeneric* vector) override;
  void Interface_AssignMap(const Tovrin::IMapGeneric* map) override;
  Tovrin::IVariant* Interface_Clone() const override;
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON* json, Tovrin::IContext* context) override;
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext* context) const override;

  std::shared_ptr<const CTypeTable> fTypes;
  Tovrin::TypeId fType = 0;
  std::variant<std::monostate, bool, double, std::string, Tovrin::AutoRefPtr<Tovrin::IDataRef>,
               Tovrin::AutoRefPtr<Tovrin::IStream>, Tovrin::AutoRefPtr<Tovrin::IUserDefinedType>,
               Tovrin::AutoRefPtr<const Tovrin::IVectorGeneric>,
               Tovrin::AutoRefPtr<const Tovrin::IMapGeneric>>
      fValue;
};

}  // namespace RefHost
