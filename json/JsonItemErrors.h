#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Tovrin::JSON {

// The error texts of a walk over items, gathered into one text:
// "Item '1' has error 'too long', Item '7' has error 'empty'". Keeps at most so many errors, and
// leaves out a piece that would make the text longer than the size given.
class JsonItemErrors {
public:
  static constexpr std::size_t kLimit = 20;
  static constexpr std::size_t kNoLimit = SIZE_MAX;
  static constexpr std::size_t kMaxSize = 10240;

  // The text goes to out, behind what stands there.
  explicit JsonItemErrors(std::string& out, std::size_t maxSize = kMaxSize,
                          std::size_t limit = kLimit)
      : fOut(out), fMaxSize(maxSize), fLimit(limit) {}

  void Add(std::size_t index, std::string_view message);
  bool IsFull() const { return fCount == fLimit; }

private:
  std::string& fOut;
  std::size_t fMaxSize;    // of the text in bytes
  std::size_t fLimit;      // of errors
  std::size_t fCount = 0;  // errors added, those that were left out included
};

}  // namespace Tovrin::JSON
