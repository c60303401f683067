#include "module/types/StringVectorBuilder.h"

#include "module/types/ResultWriters.h"

namespace Tovrin {

StringVectorBuilder::StringVectorBuilder(IContext* context) : fContext(context) {
  if (fContext) fVector = fContext->CreateStringVector();
}

void StringVectorBuilder::Append(std::string_view piece) {
  if (!fVector) return;

  const auto element = fContext->CreateInstance(kTypeString);
  if (!element) return;

  AssignText(*element.get(), piece);
  fVector = fVector->Append(element);  // the host may go on with another vector than it had
}

}  // namespace Tovrin
