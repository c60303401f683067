#pragma once

#include <exception>
#include <string>
#include <utility>

namespace RefHost {

// Runs a call into a module. No module can take the host down by what it throws: that becomes the
// exception which failure(words) gives, where words are the module's own, as far as it has any.
template <class Call, class Failure>
auto CallForeign(Call&& call, Failure&& failure) {
  std::string words;
  try {
    return std::forward<Call>(call)();
  } catch (const std::exception& error) {
    words = error.what();
  } catch (...) {
    words = "not a standard exception";
  }
  throw std::forward<Failure>(failure)(words);
}

}  // namespace RefHost
