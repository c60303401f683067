#pragma once

#include <stdexcept>
#include <string>

#include "tools/tovrin/SourceText.h"

namespace RefHost {

// What the program ends with. Scripts depend on the numbers.
enum class ExitStatus {
  Success = 0,
  Environment = 1,  // a file or a module that cannot be used
  Source = 2,       // a command line, statement or rule that cannot be read
  FailureStatus = 3,
  Exception = 4,
};

// A call that did not end well; what() is the sentence that a user reads.
class CCallFailure : public std::runtime_error {
public:
  CCallFailure(ExitStatus status, const std::string& words)
      : std::runtime_error(words), fStatus(status) {}

  ExitStatus Status() const { return fStatus; }

  Position where;  // of the call in its source, once known

private:
  ExitStatus fStatus;
};

// What becomes of an exception that came out of a module: "runtime error from function 'Size': no".
CCallFailure ExceptionFailure(const std::string& title, const std::string& words);

}  // namespace RefHost
