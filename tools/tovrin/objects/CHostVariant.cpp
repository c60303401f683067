#include "tools/tovrin/objects/CHostVariant.h"

#include <utility>

#include "host/Data.h"
#include "tools/tovrin/objects/CHostContainers.h"
#include "tools/tovrin/objects/CHostStream.h"

using Tovrin::AutoRefPtr;
using Tovrin::IDataRef;
using Tovrin::IMapGeneric;
using Tovrin::IStream;
using Tovrin::IUserDefinedType;
using Tovrin::IVectorGeneric;
using Tovrin::TypeId;

namespace RefHost {

AutoRefPtr<CHostVariant> CHostVariant::Create(std::shared_ptr<const CTypeTable> types,
                                              TypeId type) {
  AutoRefPtr<CHostVariant> variant(new CHostVariant(std::move(types)));
  variant->fType = type;
  auto& value = variant->fValue;
  if (IUserDefinedType::IsVector(type)) {
    value = AutoRefPtr<const IVectorGeneric>(new CHostVector(ScalarOf(type)));
  } else if (IUserDefinedType::IsNumberMap(type) || IUserDefinedType::IsStringMap(type)) {
    const TypeId key =
        IUserDefinedType::IsNumberMap(type) ? Tovrin::kTypeNumber : Tovrin::kTypeString;
    value = AutoRefPtr<const IMapGeneric>(new CHostMap(key, ScalarOf(type)));
  } else if (type == Tovrin::kTypeBoolean) {
    value = false;
  } else if (type == Tovrin::kTypeNumber) {
    value = 0.0;
  } else if (type == Tovrin::kTypeString) {
    value = std::string();
  } else if (type == Tovrin::kTypeDataRef) {
    value = AutoRefPtr<IDataRef>(new Tovrin::Data());
  } else if (type == Tovrin::kTypeStream) {
    value = AutoRefPtr<IStream>(new CHostStream({}));
  }
  return variant;
}

void CHostVariant::Reset(TypeId type) {
  fType = type;
  if (auto* text = std::get_if<std::string>(&fValue);
      text != nullptr && type == Tovrin::kTypeString) {
    text->clear();
  } else {
    fValue = std::monostate();
  }
}

void CHostVariant::SetText(std::string_view text) {
  fType = Tovrin::kTypeString;
  if (auto* held = std::get_if<std::string>(&fValue)) {
    held->assign(text);
  } else {
    fValue = std::string(text);
  }
}

template <class Interface>
Interface* CHostVariant::GetObject() const {
  const auto* held = Get<AutoRefPtr<Interface>>();
  if (held == nullptr) return nullptr;
  return AutoRefPtr<Interface>(*held).release();
}

template <class Interface>
void CHostVariant::SetObject(Interface* object, TypeId type) {
  fType = type;
  fValue = Tovrin::Share(object);
}

const char* CHostVariant::Interface_GetTypeAsString(Tovrin::IContext* /*context*/) const {
  return fTypes->NameOf(fType).c_str();
}

bool CHostVariant::Interface_GetBoolean() const {
  const bool* value = Get<bool>();
  return value != nullptr && *value;
}

double CHostVariant::Interface_GetNumber() const {
  const double* value = Get<double>();
  return value != nullptr ? *value : 0.0;
}

const char* CHostVariant::Interface_GetString() const {
  const std::string* value = Get<std::string>();
  return value != nullptr ? value->c_str() : "";
}

std::size_t CHostVariant::Interface_GetStringSize() const {
  const std::string* value = Get<std::string>();
  return value != nullptr ? value->size() : 0;
}

IDataRef* CHostVariant::Interface_GetData() const {
  return GetObject<IDataRef>();
}

IStream* CHostVariant::Interface_GetStream() const {
  return GetObject<IStream>();
}

IUserDefinedType* CHostVariant::Interface_GetUserDefined() const {
  return GetObject<IUserDefinedType>();
}

std::size_t CHostVariant::Interface_GetVectorSize() const {
  const auto* vector = Get<AutoRefPtr<const IVectorGeneric>>();
  return vector != nullptr && *vector ? (*vector)->GetSize() : 0;
}

const IVectorGeneric* CHostVariant::Interface_GetVector() const {
  return GetObject<const IVectorGeneric>();
}

std::size_t CHostVariant::Interface_GetMapSize() const {
  const auto* map = Get<AutoRefPtr<const IMapGeneric>>();
  return map != nullptr && *map ? (*map)->GetSize() : 0;
}

const IMapGeneric* CHostVariant::Interface_GetMap() const {
  return GetObject<const IMapGeneric>();
}

std::uint8_t CHostVariant::Interface_IsEqual(const Tovrin::IVariant* other) const {
  return other != nullptr && SameValue(*this, *other) ? 1 : 0;
}

void CHostVariant::Interface_Assign(const Tovrin::IVariant* other) {
  if (other == this) return;
  if (other == nullptr) return Reset(fType);

  const TypeId type = other->GetType();
  if (type == Tovrin::kTypeBoolean) {
    Interface_AssignBoolean(other->GetBoolean());
  } else if (type == Tovrin::kTypeNumber) {
    Interface_AssignNumber(other->GetNumber());
  } else if (type == Tovrin::kTypeString) {
    Interface_AssignString(other->GetString(), other->GetStringSize());
  } else if (type == Tovrin::kTypeDataRef) {
    fValue = other->GetData();
  } else if (type == Tovrin::kTypeStream) {
    fValue = other->GetStream();
  } else if (IUserDefinedType::IsVector(type)) {
    fValue = other->GetVector();
  } else if (IUserDefinedType::IsNumberMap(type) || IUserDefinedType::IsStringMap(type)) {
    fValue = other->GetMap();
  } else {
    fValue = other->GetUserDefined();
  }
  fType = type;
}

void CHostVariant::Interface_AssignBoolean(bool value) {
  fType = Tovrin::kTypeBoolean;
  fValue = value;
}

void CHostVariant::Interface_AssignNumber(double value) {
  fType = Tovrin::kTypeNumber;
  fValue = value;
}

void CHostVariant::Interface_AssignString(const char* bytes, std::size_t size) {
  SetText(bytes != nullptr ? std::string_view(bytes, size) : std::string_view());
}

void CHostVariant::Interface_AssignData(IDataRef* data) {
  SetObject(data, Tovrin::kTypeDataRef);
}

void CHostVariant::Interface_AssignStream(IStream* stream) {
  SetObject(stream, Tovrin::kTypeStream);
}

// An object that nobody gave a type id goes by the type that the variant was made for.
void CHostVariant::Interface_SetUserDefined(IUserDefinedType* object) {
  const TypeId type = object != nullptr ? object->GetType() : 0;
  SetObject(object, IsUserDefined(type) ? type : fType);
}

void CHostVariant::Interface_AssignVector(const IVectorGeneric* vector) {
  SetObject(vector, vector != nullptr ? vector->GetElementType() + Tovrin::kVectorOf : fType);
}

void CHostVariant::Interface_AssignMap(const IMapGeneric* map) {
  TypeId type = fType;
  if (map != nullptr) {
    type = map->GetMappedValueType() +
           (map->GetKeyType() == Tovrin::kTypeNumber ? Tovrin::kNumberMapOf : Tovrin::kStringMapOf);
  }
  SetObject(map, type);
}

Tovrin::IVariant* CHostVariant::Interface_Clone() const {
  AutoRefPtr<CHostVariant> copy(new CHostVariant(fTypes));
  copy->fType = fType;
  copy->fValue = fValue;
  if (const auto object = GetUserDefined()) copy->fValue = object->Clone();
  return copy.release();
}

// Only objects have a serialised form of their own; they know it, the variant does not.
std::uint8_t CHostVariant::Interface_Deserialize(const Tovrin::IJSON* json,
                                                 Tovrin::IContext* context) {
  const auto object = GetUserDefined();
  return object && object->Deserialize(json, context) ? 1 : 0;
}

Tovrin::IJSON* CHostVariant::Interface_Serialize(Tovrin::IContext* context) const {
  const auto object = GetUserDefined();
  return object ? object->Serialize(context).release() : nullptr;
}

}  // namespace RefHost
