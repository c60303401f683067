#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace RefHost {

// A line on standard error that tells how far a long run is. It shows itself after a second of
// work, only on a terminal, ten times a second at most, and is gone when the run ends. One thread
// at a time.
class CProgress {
public:
  using Clock = std::chrono::steady_clock;

  // inputSize: bytes of the whole input, where they are known.
  CProgress(bool isTerminal, std::optional<std::uint64_t> inputSize)
      : fIsTerminal(isTerminal), fInputSize(inputSize), fStart(Clock::now()) {}
  ~CProgress() { Hide(); }
  CProgress(const CProgress&) = delete;
  CProgress& operator=(const CProgress&) = delete;

  void Show(std::uint64_t bytes, std::uint64_t lines);
  void Hide();  // before anything else is written

  double Seconds() const { return std::chrono::duration<double>(Clock::now() - fStart).count(); }

  // The text of the line, at most width columns. Without a share, what there is to tell without
  // one.
  static std::string Render(std::optional<double> share, std::uint64_t lines, double seconds,
                            std::size_t width);

private:
  const bool fIsTerminal;
  const std::optional<std::uint64_t> fInputSize;
  const Clock::time_point fStart;
  Clock::time_point fLastShown;
  bool fIsShown = false;
};

}  // namespace RefHost
