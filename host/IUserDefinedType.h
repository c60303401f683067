#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IJSON.h"
#include "host/IObject.h"
#include "host/TypeIds.h"

namespace Tovrin {

// An instance of a type that a module defines, as the host holds it.
//
// Of each pair of Serialize and Deserialize a type overrides the form that suits it; the other
// forwards. Contract: without a context the form with one answers false or null before it forwards,
// so a type with the context-free form alone cannot be saved or restored with a null context. It
// also keeps a type that overrides neither from going round in a circle.
class TOVRIN_API IUserDefinedType : public IObject {
public:
  const char* GetName() const { return Interface_GetName(); }
  AutoRefPtr<IUserDefinedType> Clone() const {
    return AutoRefPtr<IUserDefinedType>(Interface_Clone());
  }
  TypeId GetType() const { return Interface_GetType(); }
  bool LessThan(const IUserDefinedType* other) const { return Interface_LessThan(other); }
  bool Deserialize(const IJSON* json, IContext* context) {
    return Interface_Deserialize(json, context) != 0;
  }
  bool Deserialize(const IJSON* json) { return Interface_Deserialize(json) != 0; }
  AutoRefPtr<IJSON> Serialize(IContext* context) const {
    return AutoRefPtr<IJSON>(Interface_Serialize(context));
  }
  AutoRefPtr<IJSON> Serialize() const { return AutoRefPtr<IJSON>(Interface_Serialize()); }
  bool FromBinaryData(const void* data, std::size_t size, std::size_t formatId) {
    return Interface_FromBinaryData(data, size, formatId);
  }
  std::size_t ToBinaryData(void** out, std::size_t formatId) const {
    return Interface_ToBinaryData(out, formatId);
  }

  bool IsEqual(const IUserDefinedType* other) const {
    return other && !other->LessThan(this) && !LessThan(other);
  }
  // The text before is gone in any case, also where the serialising throws.
  void ToString(std::string& text, IContext* context) const {
    text.clear();
    text = CompactTextOf(Serialize(context));
  }
  void ToString(std::string& text) const {
    text.clear();
    text = CompactTextOf(Serialize());
  }
  std::size_t ToStringSize(IContext* context) const {
    return CompactTextOf(Serialize(context)).size();
  }
  std::size_t ToStringSize() const { return CompactTextOf(Serialize()).size(); }
  static constexpr bool IsVector(TypeId id) { return IsVectorType(id); }
  static constexpr bool IsNumberMap(TypeId id) { return IsNumberMapType(id); }
  static constexpr bool IsStringMap(TypeId id) { return IsStringMapType(id); }

private:  // Contract: the host calls these by position
  virtual const char* Interface_GetName() const = 0;
  virtual IUserDefinedType* Interface_Clone() const = 0;
  virtual TypeId Interface_GetType() const = 0;
  virtual bool Interface_LessThan(const IUserDefinedType* other) const = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context) {
    return context ? Interface_Deserialize(json) : std::uint8_t{0};
  }
  virtual std::uint8_t Interface_Deserialize(const IJSON* json) {
    return Interface_Deserialize(json, nullptr);
  }
  virtual IJSON* Interface_Serialize(IContext* context) const {
    return context ? Interface_Serialize() : nullptr;
  }
  virtual IJSON* Interface_Serialize() const { return Interface_Serialize(nullptr); }
  virtual bool Interface_FromBinaryData(const void* data, std::size_t size,
                                        std::size_t formatId) = 0;
  virtual std::size_t Interface_ToBinaryData(void** out, std::size_t formatId) const = 0;

protected:
  virtual ~IUserDefinedType() = default;  // ends the table; InterfaceImpl overrides this very slot
};

}  // namespace Tovrin
