#include "tests/support/HostContext.h"

#include "tests/support/HostValues.h"

using namespace Tovrin;

IVariant* TestContext::Interface_CreateInstance(TypeId type) {
  CHostFaults::Pass();
  if (type == kTypeString && givesTexts) return new TestVariant(type);
  if (type == kTypeString + kVectorOf && givesVectors) {
    return TestVariant::Vector(type, TestVector::Texts({})).release();
  }
  return nullptr;
}

TypeId TestContext::Interface_FindType(const char* name) const {
  CHostFaults::Pass();
  typesAskedFor.emplace_back(name);
  const auto found = types.find(name);
  return found == types.end() ? 0 : found->second;
}

IContext* TestPolicy::Interface_CreateTransaction(const char* name) {
  CHostFaults::Pass();
  transactions.emplace_back(name);
  return Share(context.get()).release();
}

IPolicy* TestModuleInfo::Interface_GetPolicy() const {
  CHostFaults::Pass();
  return Share(policy.get()).release();
}
