#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace Matching {

// A text that is read many bytes at a time: zeros stand behind its end, in a copy of that end.
//
// Views the text, which must outlive it.
//
// Perf: copies of constant size where the text is long enough; see list_bench, user_agents.
class PaddedText {
public:
  static constexpr std::size_t kMostSize = 40;  // bytes that are read at a time

  explicit PaddedText(std::string_view text)
      : fText(text), fTailBegin(text.size() < kTail ? 0 : text.size() - kTail) {
    if (text.size() < kTail) {
      text.copy(fTail, text.size());
    } else {
      std::memcpy(fTail, text.data() + fTailBegin, kTail);
    }
    std::memset(fTail + (text.size() - fTailBegin), 0, kMostSize);
  }

  [[nodiscard]] std::string_view Text() const { return fText; }

  // So many bytes, at most kMostSize, from a place within the text on.
  [[nodiscard]] const char* From(std::size_t place, std::size_t size) const {
    return fText.size() - place >= size ? fText.data() + place : fTail + (place - fTailBegin);
  }

private:
  static constexpr std::size_t kTail = 64;
  static_assert(kMostSize <= kTail);

  const std::string_view fText;
  const std::size_t fTailBegin;
  char fTail[kTail + kMostSize];
};

}  // namespace Matching
