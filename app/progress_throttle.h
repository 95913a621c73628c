#pragma once
// Keeps a fast patch from flooding the UI thread with progress messages: at
// most one per 16 ms within a phase, but a new phase and the finish always
// get through so the page never misses a step.

#include <chrono>
#include <cstdint>
#include <optional>

class CProgressThrottle {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::chrono::milliseconds kMinimumGap{16};
  static constexpr float kFinishedFraction = 0.999f;

  // True when a report of `phase` at `fraction`, made at `now`, should be
  // posted; remembers it as the last one posted when so.
  bool ShouldPost(std::uint32_t phase, float fraction, Clock::time_point now);

 private:
  std::optional<std::uint32_t> lastPhase_;
  Clock::time_point lastPost_{};
};
