// The least host there is: loads the module, has it make an object, and calls one of its functions.
#include <dlfcn.h>

#include <cstdio>
#include <string>
#include <utility>

#include "host/IVariant.h"
#include "host/InterfaceImpl.h"
#include "host/ModuleFunction.h"

using namespace Tovrin;

namespace {

// A text or a truth value, and nothing to any other question.
class CValue final : public InterfaceImpl<IVariant> {
public:
  explicit CValue(bool truth) : fType(kTypeBoolean), fTruth(truth) {}
  explicit CValue(std::string text) : fType(kTypeString), fText(std::move(text)) {}

private:
  TypeId Interface_GetType() const override { return fType; }
  bool Interface_GetBoolean() const override { return fTruth; }
  const char* Interface_GetString() const override { return fText.c_str(); }
  std::size_t Interface_GetStringSize() const override { return fText.size(); }
  void Interface_AssignBoolean(bool value) override { fTruth = value; }
  void Interface_AssignString(const char* bytes, std::size_t size) override {
    fText = bytes != nullptr ? std::string(bytes, size) : std::string();
  }

  const char* Interface_GetTypeAsString(IContext*) const override { return ""; }
  double Interface_GetNumber() const override { return 0; }
  IDataRef* Interface_GetData() const override { return nullptr; }
  IStream* Interface_GetStream() const override { return nullptr; }
  IUserDefinedType* Interface_GetUserDefined() const override { return nullptr; }
  std::size_t Interface_GetVectorSize() const override { return 0; }
  const IVectorGeneric* Interface_GetVector() const override { return nullptr; }
  std::size_t Interface_GetMapSize() const override { return 0; }
  const IMapGeneric* Interface_GetMap() const override { return nullptr; }
  std::uint8_t Interface_IsEqual(const IVariant*) const override { return 0; }
  void Interface_Assign(const IVariant*) override {}
  void Interface_AssignNumber(double) override {}
  void Interface_AssignData(IDataRef*) override {}
  void Interface_AssignStream(IStream*) override {}
  void Interface_SetUserDefined(IUserDefinedType*) override {}
  void Interface_AssignVector(const IVectorGeneric*) override {}
  void Interface_AssignMap(const IMapGeneric*) override {}
  IVariant* Interface_Clone() const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const IJSON*, IContext*) override { return 0; }
  IJSON* Interface_Serialize(IContext*) const override { return nullptr; }

  const TypeId fType;
  bool fTruth = false;
  std::string fText;
};

}  // namespace

int main() {
  void* module = dlopen(TESSARIN_MODULE, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return std::puts(dlerror()), 1;

  using Factory = IUserDefinedType*(TypeId);
  auto* create = reinterpret_cast<Factory*>(dlsym(module, "tovrin_module_CreateTessarin"));
  const AutoRefPtr<IUserDefinedType> expression(create(kFirstUserType));
  std::printf("%s\n", expression->GetName());

  auto match = reinterpret_cast<ModuleFunction>(dlsym(module, "tovrin_module_MatchesTwoStrings"));
  const AutoRefPtr<IVariant> pattern(new CValue(std::string("[a-z]+\\.example")));
  const AutoRefPtr<IVariant> text(new CValue(std::string("WWW.example")));
  const AutoRefPtr<IVariant> result(new CValue(false));
  IVariant* const arguments[] = {pattern.get(), text.get()};
  const FunctionStatus status = match(2, arguments, result.get(), nullptr, nullptr);
  std::printf("status %u, %s\n", status, result->GetBoolean() ? "it matches" : "no match");
}
