#pragma once

#include <cstdint>
#include <string_view>

#include "host/AutoRefPtr.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "host/IVectorGeneric.h"

// How a module function hands over its answer, one writer a kind of result. A null result variant
// is harmless: nobody wants the answer. What a call with bad arguments leaves there is told by
// ArgumentCursor::Fail.

namespace Tovrin {

inline void WriteBoolean(IVariant* result, bool value) {
  if (result) result->AssignBoolean(value);
}

inline void WriteNumber(IVariant* result, std::int64_t value) {
  if (result) result->AssignNumber(value);
}

inline void WriteNumber(IVariant* result, std::uint64_t value) {
  if (result) result->AssignNumber(value);
}

// An empty text is a text: only what is no text at all goes to the host as a null pointer.
inline void AssignText(IVariant& variant, std::string_view text) {
  variant.AssignString(text.data() ? text.data() : "", text.size());
}

inline void WriteText(IVariant* result, std::string_view text) {
  if (result) AssignText(*result, text);
}

// An empty reference is assigned like any other: the host sees that there is no vector.
inline void WriteVector(IVariant* result, const AutoRefPtr<const IVectorGeneric>& vector) {
  if (result) result->AssignVector(vector);
}

// A T is a user-defined type. Without an object the result stays as it is.
template <class T>
void WriteObject(IVariant* result, const AutoRefPtr<T>& object) {
  if (result && object) result->SetUserDefined(Share<IUserDefinedType>(object.get()));
}

}  // namespace Tovrin
