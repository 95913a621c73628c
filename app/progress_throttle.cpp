#include "app/progress_throttle.h"

bool CProgressThrottle::ShouldPost(std::uint32_t phase, float fraction, Clock::time_point now) {
  const bool samePhase = lastPhase_ == phase;
  if (samePhase && now - lastPost_ < kMinimumGap && fraction < kFinishedFraction) return false;
  lastPhase_ = phase;
  lastPost_ = now;
  return true;
}
