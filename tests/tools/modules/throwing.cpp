// Sound as far as the loader sees; then every function throws, the objects of its type do, and so
// does its stop.
#define MODULE_DEFINITION                                \
  " TYPE Bomb : sample_CreateBomb"                       \
  " TYPE Dud : sample_CreateDud"                         \
  " CONST_FUNCTION NUMBER Standard () : sample_Standard" \
  " CONST_FUNCTION BOOLEAN Odd (STRING) : sample_Odd"    \
  " CONST_FUNCTION Bomb ToBomb (STRING) : sample_ToBomb" \
  " PROCEDURE Step () : sample_Step"
#define MODULE_SHUTDOWN Throw<int>("will not stop")
#include <string>

#include "host/IContext.h"
#include "host/InterfaceImpl.h"
#include "tests/tools/modules/ModuleFrame.h"

namespace {

// Throws what is no standard exception where its word is "odd".
class CBomb final : public Tovrin::InterfaceImpl<Tovrin::IUserDefinedType> {
public:
  CBomb(std::uint32_t typeId, std::string word) : fTypeId(typeId), fWord(std::move(word)) {}

private:
  const char* Interface_GetName() const override { return "Bomb"; }
  Tovrin::IUserDefinedType* Interface_Clone() const override { return nullptr; }
  Tovrin::TypeId Interface_GetType() const override { return fTypeId; }
  bool Interface_LessThan(const Tovrin::IUserDefinedType*) const override { return false; }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON*, Tovrin::IContext*) override {
    return Throw<std::uint8_t>("will not load");
  }
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext*) const override {
    if (fWord == "odd") throw 42;
    return Throw<Tovrin::IJSON*>(fWord.c_str());
  }
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }

  const std::uint32_t fTypeId;
  const std::string fWord;
};

}  // namespace

MODULE_EXPORT Tovrin::IUserDefinedType* sample_CreateBomb(std::uint32_t typeId) {
  return new CBomb(typeId, "boom");
}
MODULE_EXPORT Tovrin::IUserDefinedType* sample_CreateDud(std::uint32_t) {
  return Throw<Tovrin::IUserDefinedType*>("never made");
}
MODULE_FUNCTION(sample_ToBomb) {
  result->SetUserDefined(Tovrin::AutoRefPtr<Tovrin::IUserDefinedType>(
      new CBomb(context->FindType("Bomb"), arguments[0]->GetString())));
  return 0;
}
MODULE_FUNCTION(sample_Standard) {
  return Throw<Tovrin::FunctionStatus>("broken inside");
}
MODULE_FUNCTION(sample_Odd) {
  throw 42;
}
MODULE_FUNCTION(sample_Step) {
  return Throw<Tovrin::FunctionStatus>("slipped");
}
