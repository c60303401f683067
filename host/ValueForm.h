#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "host/AutoRefPtr.h"
#include "host/IDataRef.h"
#include "host/IStream.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "host/TypeIds.h"

namespace Tovrin {

// How a C++ type is read from a variant and written to one: its scalar type id, Read and Write.
// An AutoRefPtr of a user-defined type has no fixed id, since the host hands those out.
template <class T>
struct ValueForm;

template <>
struct ValueForm<bool> {
  static constexpr TypeId kType = kTypeBoolean;
  static bool Read(const IVariant& variant) { return variant.GetBoolean(); }
  static void Write(IVariant& variant, bool value) { variant.AssignBoolean(value); }
};

// All numbers cross as double. What an integer cannot hold, NaN included, reads as its lowest
// value.
template <class Number>
struct NumberForm {
  static constexpr TypeId kType = kTypeNumber;
  static Number Read(const IVariant& variant) {
    const double number = variant.GetNumber();
    if constexpr (std::is_floating_point_v<Number>) return number;

    using Limits = std::numeric_limits<Number>;
    const double pastEnd = std::ldexp(1.0, Limits::digits);  // exact, as max() is not
    const bool isHeld = number > static_cast<double>(Limits::min()) - 1.0 && number < pastEnd;
    return isHeld ? static_cast<Number>(number) : Limits::min();
  }
  static void Write(IVariant& variant, Number value) { variant.AssignNumber(value); }
};
template <>
struct ValueForm<std::int32_t> : NumberForm<std::int32_t> {};
template <>
struct ValueForm<std::int64_t> : NumberForm<std::int64_t> {};
template <>
struct ValueForm<std::uint64_t> : NumberForm<std::uint64_t> {};
template <>
struct ValueForm<double> : NumberForm<double> {};

template <>
struct ValueForm<std::string> {
  static constexpr TypeId kType = kTypeString;
  static std::string Read(const IVariant& variant) {
    const std::size_t size = variant.GetStringSize();  // first: the bytes hold until the next call
    const char* bytes = variant.GetString();
    return bytes ? std::string(bytes, size) : std::string();
  }
  static void Write(IVariant& variant, const std::string& value) { variant.AssignString(value); }
};

template <>
struct ValueForm<AutoRefPtr<IDataRef>> {
  static constexpr TypeId kType = kTypeDataRef;
  static AutoRefPtr<IDataRef> Read(const IVariant& variant) { return variant.GetData(); }
  static void Write(IVariant& variant, const AutoRefPtr<IDataRef>& value) {
    variant.AssignData(value);
  }
};

template <>
struct ValueForm<AutoRefPtr<IStream>> {
  static constexpr TypeId kType = kTypeStream;
  static AutoRefPtr<IStream> Read(const IVariant& variant) { return variant.GetStream(); }
  static void Write(IVariant& variant, const AutoRefPtr<IStream>& value) {
    variant.AssignStream(value);
  }
};

// Tessarin, TessarinList, or the interface itself; an object of another class reads as empty.
template <class T>
struct ValueForm<AutoRefPtr<T>> {
  static_assert(std::is_base_of_v<IUserDefinedType, T>);
  static AutoRefPtr<T> Read(const IVariant& variant) {
    const AutoRefPtr<IUserDefinedType> object = variant.GetUserDefined();
    return Share(dynamic_cast<T*>(object.get()));
  }
  static void Write(IVariant& variant, const AutoRefPtr<T>& value) {
    variant.SetUserDefined(Share<IUserDefinedType>(value.get()));
  }
};

// The value of an element; the neutral value where the container gave none.
template <class T>
T ReadValue(const AutoRefPtr<IVariant>& variant) {
  return variant ? ValueForm<T>::Read(*variant.get()) : T{};
}

// A new variant that holds the value; empty when the host gives none.
template <class T, class Context>
AutoRefPtr<IVariant> MakeValue(Context& context, const T& value) {
  AutoRefPtr<IVariant> variant = context.CreateInstance(ValueForm<T>::kType);
  if (variant) ValueForm<T>::Write(*variant.get(), value);
  return variant;
}

// What a map's id adds to the id of the values it holds.
template <class Key>
inline constexpr TypeId kMapKeyedBy =
    std::is_same_v<Key, std::string> ? kStringMapOf : kNumberMapOf;

}  // namespace Tovrin
