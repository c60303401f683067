#include "tools/tovrin/objects/CHostPolicy.h"

namespace RefHost {

Tovrin::IContext* CHostPolicy::Interface_CreateTransaction(const char* name) {
  return new CHostContext(fTables, Tovrin::Share<Tovrin::IPolicy>(this), fLogger,
                          ++fLastTransaction, Tovrin::TextOrEmpty(name));
}

std::uint64_t CHostPolicy::Interface_GetUserDataId(const char* name) const {
  const std::lock_guard lock(fLock);
  return fUserDataIds.emplace(Tovrin::TextOrEmpty(name), fUserDataIds.size() + 1).first->second;
}

Tovrin::IVariant* CHostPolicy::Interface_CreateUserDefinedVariable(const char* typeName) {
  const Tovrin::TypeId type = fTables.types->Find(Tovrin::TextOrEmpty(typeName));
  const auto factory = fTables.types->FactoryOf(type);
  if (factory == nullptr) return nullptr;
  const Tovrin::AutoRefPtr<Tovrin::IUserDefinedType> object(factory(type));
  if (!object) return nullptr;

  auto variable = CHostVariant::Create(fTables.types, type);
  variable->SetUserDefined(object);
  return variable.release();
}

}  // namespace RefHost
