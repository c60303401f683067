#include "tests/module/Answer.h"

#include <stdexcept>

using namespace Tovrin;

namespace {

FunctionStatus CallInto(IVariant* result, ModuleFunction function, const Values& arguments,
                        IContext* context) {
  std::vector<IVariant*> borrowed;
  for (const auto& argument : arguments) borrowed.push_back(argument.get());
  const AutoRefPtr<TestModuleInfo> info(new TestModuleInfo);
  return function(static_cast<std::uint32_t>(borrowed.size()), borrowed.data(), result, info.get(),
                  context);
}

}  // namespace

std::string Answer::Text() const {
  const std::size_t size = result->GetStringSize();
  const char* const bytes = result->GetString();
  if (!bytes) throw std::runtime_error("the result holds no text");
  return std::string(bytes, size);
}

Answer CallFunction(ModuleFunction function, const Values& arguments, IContext* context) {
  Answer answer{0, AutoRefPtr<TestVariant>(new TestVariant(0))};
  answer.status = CallInto(answer.result.get(), function, arguments, context);
  return answer;
}

FunctionStatus CallFunctionWithoutResult(ModuleFunction function, const Values& arguments,
                                         IContext* context) {
  return CallInto(nullptr, function, arguments, context);
}
