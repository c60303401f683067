#include "tools/tovrin/objects/CHostJson.h"

using Tovrin::IJSON;
using Tovrin::IUserDefinedType;
using Tovrin::JSON::JSONWrapper;

namespace RefHost {

IUserDefinedType* CHostJson::Create(std::uint32_t typeId) {
  return new CHostJson(typeId, JSONWrapper::CreateObject());
}

IUserDefinedType* CHostJson::Interface_Clone() const {
  return new CHostJson(fTypeId, Value(new JSONWrapper(fValue.get())));
}

bool CHostJson::Interface_LessThan(const IUserDefinedType* other) const {
  const auto* const peer = dynamic_cast<const CHostJson*>(other);
  return peer != nullptr && fValue->LessThan(peer->fValue.get());
}

std::uint8_t CHostJson::Interface_Deserialize(const IJSON* json) {
  return json != nullptr && fValue->Parse(json->ToString().c_str());
}

IJSON* CHostJson::Interface_Serialize() const {
  return fValue->Clone().release();
}

}  // namespace RefHost
