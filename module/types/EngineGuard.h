#pragma once

#include <stdexcept>
#include <utility>

#include "Common/CException.h"

namespace Tovrin {

// Runs a call into the common library's matching, and lets nothing of the library's own exception
// family past: it goes on as a std::runtime_error with the same text. Hosts know only standard
// exceptions; those leave as they are.
template <class Call>
auto Guarded(Call&& call) {
  try {
    return std::forward<Call>(call)();
  } catch (const CException& failure) {
    throw std::runtime_error(failure.Reason());
  }
}

}  // namespace Tovrin
