#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IDataRef.h"
#include "host/IJSON.h"
#include "host/IMapGeneric.h"
#include "host/IObject.h"
#include "host/IStream.h"
#include "host/IUserDefinedType.h"
#include "host/IVectorGeneric.h"
#include "host/TypeIds.h"

namespace Tovrin {

// A value of the rule language, scalar or container.
class TOVRIN_API IVariant : public IObject {
public:
  TypeId GetType() const { return Interface_GetType(); }
  std::string GetTypeAsString(IContext* context) const {
    return TextOrEmpty(Interface_GetTypeAsString(context));
  }
  bool GetBoolean() const { return Interface_GetBoolean(); }
  double GetNumber() const { return Interface_GetNumber(); }
  const char* GetString() const { return Interface_GetString(); }  // borrowed; GetStringSize bytes
  std::size_t GetStringSize() const { return Interface_GetStringSize(); }
  AutoRefPtr<IDataRef> GetData() const { return AutoRefPtr<IDataRef>(Interface_GetData()); }
  AutoRefPtr<IStream> GetStream() const { return AutoRefPtr<IStream>(Interface_GetStream()); }
  AutoRefPtr<IUserDefinedType> GetUserDefined() const {
    return AutoRefPtr<IUserDefinedType>(Interface_GetUserDefined());
  }
  std::size_t GetVectorSize() const { return Interface_GetVectorSize(); }
  AutoRefPtr<const IVectorGeneric> GetVector() const {
    return AutoRefPtr<const IVectorGeneric>(Interface_GetVector());
  }
  std::size_t GetMapSize() const { return Interface_GetMapSize(); }
  AutoRefPtr<const IMapGeneric> GetMap() const {
    return AutoRefPtr<const IMapGeneric>(Interface_GetMap());
  }
  bool IsEqual(const IVariant* other) const { return Interface_IsEqual(other) == 1; }
  void Assign(const IVariant* other) { Interface_Assign(other); }
  void AssignBoolean(bool value) { Interface_AssignBoolean(value); }
  void AssignNumber(double value) { Interface_AssignNumber(value); }
  void AssignNumber(std::int32_t value) {
    Interface_AssignNumber(value);
  }  // so that AssignNumber(0) is not ambiguous
  void AssignNumber(std::int64_t value) { Interface_AssignNumber(static_cast<double>(value)); }
  void AssignNumber(std::uint64_t value) { Interface_AssignNumber(static_cast<double>(value)); }
  void AssignString(const char* bytes, std::size_t size) { Interface_AssignString(bytes, size); }
  void AssignString(const std::string& text) { Interface_AssignString(text.data(), text.size()); }
  void AssignData(const AutoRefPtr<IDataRef>& data) { Interface_AssignData(data.get()); }
  void AssignStream(const AutoRefPtr<IStream>& stream) { Interface_AssignStream(stream.get()); }
  void SetUserDefined(const AutoRefPtr<IUserDefinedType>& object) {
    Interface_SetUserDefined(object.get());
  }
  void AssignVector(const AutoRefPtr<const IVectorGeneric>& vector) {
    Interface_AssignVector(vector.get());
  }
  void AssignMap(const AutoRefPtr<const IMapGeneric>& map) { Interface_AssignMap(map.get()); }
  AutoRefPtr<IVariant> Clone() const { return AutoRefPtr<IVariant>(Interface_Clone()); }
  bool Deserialize(const AutoRefPtr<IJSON>& json, IContext* context) {
    return Interface_Deserialize(json.get(), context) != 0;
  }
  AutoRefPtr<IJSON> Serialize(IContext* context) const {
    return AutoRefPtr<IJSON>(Interface_Serialize(context));
  }
  std::string ToString(const AutoRefPtr<IContext>& context) const {
    return CompactTextOf(Serialize(context.get()));
  }

protected:
  ~IVariant() = default;

private:  // Contract: the host calls these by position
  virtual TypeId Interface_GetType() const = 0;
  virtual const char* Interface_GetTypeAsString(IContext* context) const = 0;
  virtual bool Interface_GetBoolean() const = 0;
  virtual double Interface_GetNumber() const = 0;
  virtual const char* Interface_GetString() const = 0;
  virtual std::size_t Interface_GetStringSize() const = 0;
  virtual IDataRef* Interface_GetData() const = 0;
  virtual IStream* Interface_GetStream() const = 0;
  virtual IUserDefinedType* Interface_GetUserDefined() const = 0;
  virtual std::size_t Interface_GetVectorSize() const = 0;
  virtual const IVectorGeneric* Interface_GetVector() const = 0;
  virtual std::size_t Interface_GetMapSize() const = 0;
  virtual const IMapGeneric* Interface_GetMap() const = 0;
  virtual std::uint8_t Interface_IsEqual(const IVariant* other) const = 0;
  virtual void Interface_Assign(const IVariant* other) = 0;
  virtual void Interface_AssignBoolean(bool value) = 0;
  virtual void Interface_AssignNumber(double value) = 0;
  virtual void Interface_AssignString(const char* bytes, std::size_t size) = 0;
  virtual void Interface_AssignData(IDataRef* data) = 0;
  virtual void Interface_AssignStream(IStream* stream) = 0;
  virtual void Interface_SetUserDefined(IUserDefinedType* object) = 0;
  virtual void Interface_AssignVector(const IVectorGeneric* vector) = 0;
  virtual void Interface_AssignMap(const IMapGeneric* map) = 0;
  virtual IVariant* Interface_Clone() const = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context) = 0;
  virtual IJSON* Interface_Serialize(IContext* context) const = 0;
};

// What the containers could not say before IVariant was whole.
inline AutoRefPtr<IVariant> IVectorGeneric::Get(std::size_t index) const {
  return AutoRefPtr<IVariant>(Interface_Get(index));
}
inline AutoRefPtr<const IVectorGeneric> IVectorGeneric::Append(
    const AutoRefPtr<IVariant>& element) const {
  return AutoRefPtr<const IVectorGeneric>(Interface_Append(element.get()));
}
inline AutoRefPtr<IVariant> IMapGeneric::GetKeyAt(std::size_t index) const {
  return AutoRefPtr<IVariant>(Interface_GetKeyAt(index));
}
inline AutoRefPtr<IVariant> IMapGeneric::GetValueAt(std::size_t index) const {
  return AutoRefPtr<IVariant>(Interface_GetValueAt(index));
}
inline AutoRefPtr<const IMapGeneric> IMapGeneric::Insert(const AutoRefPtr<IVariant>& key,
                                                         const AutoRefPtr<IVariant>& value) const {
  return AutoRefPtr<const IMapGeneric>(Interface_Insert(key.get(), value.get()));
}

inline AutoRefPtr<IJSON> IVectorGeneric::Serialize(IContext* context) const {
  return AutoRefPtr<IJSON>(Interface_Serialize(context));
}
inline bool IVectorGeneric::Deserialize(const AutoRefPtr<IJSON>& json, IContext* context,
                                        AutoRefPtr<const IVectorGeneric>* out) const {
  const IVectorGeneric* slot = nullptr;
  const bool isDone = Interface_Deserialize(json.get(), context, &slot) != 0;
  AutoRefPtr<const IVectorGeneric> held(slot);
  if (out) *out = std::move(held);
  return isDone;
}

inline AutoRefPtr<IJSON> IMapGeneric::Serialize(IContext* context) const {
  return AutoRefPtr<IJSON>(Interface_Serialize(context));
}
inline bool IMapGeneric::Deserialize(const AutoRefPtr<IJSON>& json, IContext* context,
                                     AutoRefPtr<const IMapGeneric>* out) const {
  const IMapGeneric* slot = nullptr;
  const bool isDone = Interface_Deserialize(json.get(), context, &slot) != 0;
  AutoRefPtr<const IMapGeneric> held(slot);
  if (out) *out = std::move(held);
  return isDone;
}

}  // namespace Tovrin
