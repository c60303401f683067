#pragma once

#include <string>

#include "Common/CException.h"

// The engine of a CRegex failed while it was matching.
class CRegexException : public ARunTimeError {
public:
  explicit CRegexException(const std::string& reason) : ARunTimeError("Regex", "Regex", reason) {}
};
