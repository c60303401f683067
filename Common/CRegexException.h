#pragma once

#include <string>
#include <utility>

// The engine of a CRegex failed while it was matching.
class CRegexException {
public:
  explicit CRegexException(std::string reason) : fReason(std::move(reason)) {}
  virtual ~CRegexException() = default;

  void GetReasonStr(std::string& reason) const { reason = fReason; }
  std::string Reason() const { return fReason; }

  std::string fReason;
};
