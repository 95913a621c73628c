#pragma once
// The slowest a response body may arrive. Each transport feeds it the body's
// byte count as it goes; from the response on, every stretch of at least the
// configured window must bring the configured rate on average.

#include <chrono>
#include <cstdint>

#include "app/launcher_config.h"

namespace net {

class CBodyRateFloor {
 public:
  using Clock = std::chrono::steady_clock;

  // The first stretch starts now.
  explicit CBodyRateFloor(const LauncherConfig& config);

  // `received`: body bytes so far. True once a stretch of a whole window (or
  // longer, when the check came late) brought fewer bytes than the rate asks.
  bool Missed(std::uint64_t received, Clock::time_point now);

 private:
  const std::uint64_t bytesPerSecond_;
  const std::chrono::milliseconds window_;
  Clock::time_point stretchStart_;
  std::uint64_t receivedAtStart_ = 0;
};

}  // namespace net
