#pragma once

#include <cstdint>
#include <cstring>
#include <new>

#include "Common/CVariant.h"
#include "Common/CVariantTypeTable.h"
#include "Common/VariantElements.h"

// The store of a CVariant seen as elements, for the sources of the class.

template <class E>
typename E::Stored* CVariant::Elements() {
  return std::launder(reinterpret_cast<typename E::Stored*>(fStorage.Data()));
}

template <class E>
std::span<const typename E::Stored> CVariant::Elements() const {
  return {std::launder(reinterpret_cast<const typename E::Stored*>(fStorage.Data())),
          fStorage.Size() / sizeof(typename E::Stored)};
}

template <class E>
const typename E::Stored* CVariant::Scalar() const {
  return fStorage.Size() < sizeof(typename E::Stored) ? nullptr : Elements<E>().data();
}

template <class E>
void CVariant::SetElement(VariantType type, NewElement<E>& element) {
  if (!ResizeForNewValue(sizeof(typename E::Stored))) return;
  element.MoveTo(Elements<E>());
  fType = type;
  fSorted = false;
}

template <class E>
void CVariant::GrowKeeping(std::uint64_t capacity) {
  using Stored = typename E::Stored;
  fStorage.GrowKeeping(capacity, [this](char* to, char* from) {
    if constexpr (E::kMovesAsBytes) {
      std::memcpy(to, from, fStorage.Size());
    } else {
      RelocateElements<E>(reinterpret_cast<Stored*>(to), Elements<E>(),
                          fStorage.Size() / sizeof(Stored));
    }
  });
}

inline bool CVariant::HasPosition(std::int64_t index) const {
  return static_cast<std::uint64_t>(index) < SizeOfList();
}
