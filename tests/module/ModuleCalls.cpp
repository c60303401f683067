#include "tests/module/ModuleCalls.h"

using namespace Tovrin;

namespace {

ModuleFunction FunctionNamed(const std::string& name) {
  return reinterpret_cast<ModuleFunction>(ModuleSymbol(name));
}

}  // namespace

Answer CallIn(IContext* context, const std::string& function, const Values& arguments) {
  return CallFunction(FunctionNamed(function), arguments, context);
}

Answer Call(const std::string& function, const Values& arguments) {
  const AutoRefPtr<TestContext> context(new TestContext);
  return CallIn(context.get(), function, arguments);
}

FunctionStatus CallWithoutResult(const std::string& function, const Values& arguments) {
  const AutoRefPtr<TestContext> context(new TestContext);
  return CallFunctionWithoutResult(FunctionNamed(function), arguments, context.get());
}

AutoRefPtr<TestVariant> Expression(const std::string& expression) {
  const Answer made = Call("tovrin_module_StringToRegEx", {Text(expression)});
  return TestVariant::Object(kTestTessarinId, made.Object());
}

AutoRefPtr<TestVariant> Text(std::string_view text) {
  return TestVariant::Text(text);
}

AutoRefPtr<TestVariant> Number(double value) {
  return TestVariant::Number(value);
}

AutoRefPtr<TestVariant> Boolean(bool value) {
  return TestVariant::Boolean(value);
}

AutoRefPtr<TestVariant> WithoutObject(TypeId type) {
  return TestVariant::Object(type, {});
}
