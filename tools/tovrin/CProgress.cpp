#include "tools/tovrin/CProgress.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>

#include "Libs/Platform/Streams.h"

namespace RefHost {

void CProgress::Show(std::uint64_t bytes, std::uint64_t lines) {
  if (!fIsTerminal) return;
  const Clock::time_point now = Clock::now();
  if (now - fStart < std::chrono::seconds(1)) return;
  if (fIsShown && now - fLastShown < std::chrono::milliseconds(100)) return;

  std::optional<double> share;
  if (fInputSize && *fInputSize > 0) {
    share = std::min(1.0, static_cast<double>(bytes) / static_cast<double>(*fInputSize));
  }
  fmt::print(stderr, "\r{}\x1b[K", Render(share, lines, Seconds(), ErrorStreamWidth() - 1));
  std::fflush(stderr);
  fIsShown = true;
  fLastShown = now;
}

void CProgress::Hide() {
  if (!fIsShown) return;
  fmt::print(stderr, "\r\x1b[K");
  std::fflush(stderr);
  fIsShown = false;
}

std::string CProgress::Render(std::optional<double> share, std::uint64_t lines, double seconds,
                              std::size_t width) {
  const double rate = seconds > 0 ? static_cast<double>(lines) / seconds : 0;
  const std::string facts = fmt::format("{} lines, {:.0f} lines/s", lines, rate);
  if (!share) return facts.substr(0, width);

  const std::string percent = fmt::format(" {:3.0f} %  {}", *share * 100, facts);
  constexpr std::size_t kSmallest = 10;
  if (width < percent.size() + kSmallest + 2) return facts.substr(0, width);
  const std::size_t room = std::min<std::size_t>(width - percent.size() - 2, 40);
  const auto filled = static_cast<std::size_t>(static_cast<double>(room) * *share);
  return fmt::format("[{}{}]{}", std::string(filled, '#'), std::string(room - filled, ' '),
                     percent);
}

}  // namespace RefHost
