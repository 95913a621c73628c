#include "net/body_rate_floor.h"

namespace net {

CBodyRateFloor::CBodyRateFloor(const LauncherConfig& config)
    : bytesPerSecond_(config.minimumBodyRate),
      window_(config.minimumBodyRateWindowMs),
      stretchStart_(Clock::now()) {}

bool CBodyRateFloor::Missed(std::uint64_t received, Clock::time_point now) {
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - stretchStart_);
  if (elapsed < window_) return false;
  const std::uint64_t wanted = bytesPerSecond_ * static_cast<std::uint64_t>(elapsed.count()) / 1000;
  if (received - receivedAtStart_ < wanted) return true;
  stretchStart_ = now;
  receivedAtStart_ = received;
  return false;
}

}  // namespace net
