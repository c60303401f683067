// A module without a fault, small enough to know what each call must answer: a type that holds a
// text, overloads, every failure status, and functions that leave their result alone.
#define MODULE_DEFINITION                                               \
  " TYPE Box : sample_CreateBox"                                        \
  " CONST_FUNCTION Box ToBox (STRING) : sample_ToBox"                   \
  " CONST_FUNCTION Box NoBox () : sample_NoBox"                         \
  " CONST_FUNCTION STRING Box.ToString (Box) : sample_BoxToString"      \
  " PROCEDURE Box.Add (Box,STRING) : sample_BoxAdd"                     \
  " CONST_FUNCTION STRING Kind (STRING,STRING) : sample_KindTexts"      \
  " CONST_FUNCTION STRING Kind (STRING,NUMBER) : sample_KindTextNumber" \
  " CONST_FUNCTION STRING Kind (Box,NUMBER) : sample_KindBox"           \
  " CONST_FUNCTION NUMBER Fail (NUMBER,NUMBER) : sample_Fail"           \
  " PROCEDURE FailStep (NUMBER,NUMBER) : sample_Fail"                   \
  " CONST_FUNCTION BOOLEAN FailOn (STRING,STRING) : sample_FailOn"      \
  " CONST_FUNCTION NUMBER Throw (STRING) : sample_Throw"                \
  " CONST_FUNCTION BOOLEAN Same (STRING,STRING) : sample_Same"          \
  " CONST_FUNCTION BOOLEAN Pause (NUMBER) : sample_Pause"               \
  " CONST_FUNCTION NUMBER Length (STRING) : sample_Length"              \
  " CONST_FUNCTION VECTOR<STRING> Letters (STRING) : sample_Letters"    \
  " CONST_FUNCTION NUMBER Count (VECTOR<STRING>) : sample_Count"        \
  " CONST_FUNCTION STRING FunctionName () : sample_FunctionName"        \
  " FUNCTION BOOLEAN Sample.SetIHost (DATAREF) : sample_SetIHost"       \
  " CONST_FUNCTION BOOLEAN HasHost () : sample_HasHost"
#include <chrono>
#include <string>
#include <thread>

#include "host/IContext.h"
#include "host/IDataRef.h"
#include "host/IHost.h"
#include "host/IVectorGeneric.h"
#include "host/InterfaceImpl.h"
#include "tests/tools/modules/ModuleFrame.h"

namespace {

using Tovrin::AutoRefPtr;
using Tovrin::IVariant;

class CBox final : public Tovrin::InterfaceImpl<Tovrin::IUserDefinedType> {
public:
  CBox(std::uint32_t typeId, std::string text) : fTypeId(typeId), fText(std::move(text)) {}

  std::string& Text() { return fText; }

private:
  const char* Interface_GetName() const override { return "Box"; }
  Tovrin::IUserDefinedType* Interface_Clone() const override { return new CBox(fTypeId, fText); }
  Tovrin::TypeId Interface_GetType() const override { return fTypeId; }
  bool Interface_LessThan(const Tovrin::IUserDefinedType* other) const override {
    return fText < dynamic_cast<const CBox*>(other)->fText;
  }
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }

  const std::uint32_t fTypeId;
  std::string fText;
};

Tovrin::IHost* hostGiven = nullptr;

std::string TextAt(IVariant* const* arguments, std::size_t index) {
  return {arguments[index]->GetString(), arguments[index]->GetStringSize()};
}

Tovrin::FunctionStatus Answer(IVariant* result, const std::string& text) {
  result->AssignString(text.data(), text.size());
  return 0;
}

}  // namespace

MODULE_EXPORT Tovrin::IUserDefinedType* sample_CreateBox(std::uint32_t typeId) {
  return new CBox(typeId, "new");
}

MODULE_FUNCTION(sample_ToBox) {
  result->SetUserDefined(AutoRefPtr<Tovrin::IUserDefinedType>(
      new CBox(context->FindType("Box"), TextAt(arguments, 0))));
  return 0;
}

MODULE_FUNCTION(sample_NoBox) {
  return 0;
}

MODULE_FUNCTION(sample_BoxToString) {
  const auto object = arguments[0]->GetUserDefined();
  if (!object) return Tovrin::MakeStatus(1, Tovrin::kInvalidObject);
  return Answer(result, dynamic_cast<CBox*>(object.get())->Text());
}

MODULE_FUNCTION(sample_BoxAdd) {
  const auto object = arguments[0]->GetUserDefined();
  if (!object) return Tovrin::MakeStatus(1, Tovrin::kInvalidObject);
  dynamic_cast<CBox*>(object.get())->Text() += TextAt(arguments, 1);
  return 0;
}

MODULE_FUNCTION(sample_KindTexts) {
  return Answer(result, "text, text");
}
MODULE_FUNCTION(sample_KindTextNumber) {
  return Answer(result, "text, number");
}
MODULE_FUNCTION(sample_KindBox) {
  return Answer(result, "box, number");
}

MODULE_FUNCTION(sample_Fail) {
  return static_cast<Tovrin::FunctionStatus>(arguments[0]->GetNumber()) << 16 |
         static_cast<Tovrin::FunctionStatus>(arguments[1]->GetNumber());
}

MODULE_FUNCTION(sample_FailOn) {
  result->AssignBoolean(true);
  return TextAt(arguments, 0) == TextAt(arguments, 1)
             ? Tovrin::MakeStatus(2, Tovrin::kWrongArgument)
             : 0;
}

MODULE_FUNCTION(sample_Throw) {
  throw std::runtime_error(TextAt(arguments, 0));
}

MODULE_FUNCTION(sample_Same) {
  result->AssignBoolean(TextAt(arguments, 0) == TextAt(arguments, 1));
  return 0;
}

// True, after so many seconds.
MODULE_FUNCTION(sample_Pause) {
  std::this_thread::sleep_for(std::chrono::duration<double>(arguments[0]->GetNumber()));
  result->AssignBoolean(true);
  return 0;
}

MODULE_FUNCTION(sample_Length) {
  result->AssignNumber(static_cast<double>(arguments[0]->GetStringSize()));
  return 0;
}

MODULE_FUNCTION(sample_Letters) {
  auto letters = context->CreateStringVector();
  for (const char& letter : TextAt(arguments, 0)) {
    const auto element = context->CreateInstance(Tovrin::kTypeString);
    element->AssignString(&letter, 1);
    letters = letters->Append(element);
  }
  result->AssignVector(letters);
  return 0;
}

MODULE_FUNCTION(sample_Count) {
  const auto vector = arguments[0]->GetVector();
  if (!vector) return Tovrin::MakeStatus(1, Tovrin::kWrongArgument);
  result->AssignNumber(static_cast<double>(vector->GetSize()));
  return 0;
}

MODULE_FUNCTION(sample_FunctionName) {
  return Answer(result, info->GetModuleName() + ": " + info->GetFuncOrProcName());
}

MODULE_FUNCTION(sample_SetIHost) {
  const auto data = arguments[0]->GetData();
  result->AssignBoolean(data && data->GetSize() == sizeof hostGiven &&
                        data->Read(&hostGiven, sizeof hostGiven, 0) == sizeof hostGiven);
  return 0;
}

MODULE_FUNCTION(sample_HasHost) {
  result->AssignBoolean(hostGiven != nullptr && !hostGiven->IsDebugActive());
  return 0;
}
