#pragma once

#include <functional>
#include <string>

#include "Common/CException.h"

// The reason that an operation fails with; empty when it does not.
inline std::string ReasonOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const CRunTimeError& error) {
    return error.Reason();
  }
  return "";
}
