#include "module/types/ArgumentCursor.h"

namespace Tovrin {

bool ArgumentCursor::ReadBoolean() {
  const IVariant* const argument = NextOfType(kTypeBoolean);
  return argument && argument->GetBoolean();
}

std::int64_t ArgumentCursor::ReadSigned() {
  const IVariant* const argument = NextOfType(kTypeNumber);
  return argument ? TruncateToInt64(argument->GetNumber()) : 0;
}

std::uint64_t ArgumentCursor::ReadUnsigned() {
  const IVariant* const argument = NextOfType(kTypeNumber);
  return argument ? TruncateToUInt64(argument->GetNumber()) : 0;
}

std::string ArgumentCursor::ReadText() {
  const IVariant* const argument = NextOfType(kTypeString);
  if (!argument) return {};

  // The size first: bytes that a variant lends are good until it is asked again.
  const std::size_t size = argument->GetStringSize();
  const char* const bytes = argument->GetString();
  return bytes ? std::string(bytes, size) : std::string();
}

const char* ArgumentCursor::ReadZeroTerminatedText() {
  const IVariant* const argument = NextOfType(kTypeString);
  const char* const text = argument ? argument->GetString() : nullptr;
  return text ? text : "";
}

AutoRefPtr<IDataRef> ArgumentCursor::ReadData() {
  const IVariant* const argument = NextOfType(kTypeDataRef);
  return argument ? argument->GetData() : AutoRefPtr<IDataRef>();
}

AutoRefPtr<const IVectorGeneric> ArgumentCursor::ReadVector() {
  const IVariant* const argument = Next();
  if (!argument) return {};

  auto vector = argument->GetVector();
  if (!vector) Refuse(*argument);
  return vector;
}

FunctionStatus ArgumentCursor::Fail(IVariant* result, bool neutral) const {
  if (result) result->AssignBoolean(neutral);
  return fStatus;
}

FunctionStatus ArgumentCursor::Fail(IVariant* result, int neutral) const {
  if (result) result->AssignNumber(neutral);
  return fStatus;
}

FunctionStatus ArgumentCursor::Fail(IVariant* result, std::nullptr_t noText) const {
  if (result) result->AssignString(noText, 0);
  return fStatus;
}

const IVariant* ArgumentCursor::Next() {
  if (Failed()) return nullptr;

  ++fIndex;
  if (fIndex >= fArgumentCount) {
    FailHere(kArgumentMissing);
    return nullptr;
  }
  const IVariant* const argument = fArguments ? fArguments[fIndex] : nullptr;
  if (!argument) FailHere(kWrongArgument);
  return argument;
}

const IVariant* ArgumentCursor::NextOfType(TypeId type) {
  const IVariant* const argument = Next();
  if (!argument || argument->GetType() == type) return argument;

  Refuse(*argument);
  return nullptr;
}

void ArgumentCursor::Refuse(const IVariant& argument) {
  const bool lacksItsObject = argument.GetType() >= kFirstUserType && !argument.GetUserDefined();
  FailHere(lacksItsObject ? kInvalidObject : kWrongArgument);
}

void ArgumentCursor::FailHere(FunctionStatusCode code) {
  fStatus = MakeStatus(static_cast<std::uint32_t>(fIndex) + 1, code);
}

}  // namespace Tovrin
