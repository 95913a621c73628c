#include "platform/file_time.h"

#include <limits>

namespace platform {
namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kNanosecondsPerTick = 100;
// Seconds from 1601-01-01 to 1970-01-01 (369 years, 89 of them leap years).
constexpr std::int64_t kUnixEpochSeconds = 11'644'473'600;

constexpr std::int64_t kMaxTicks = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMinTicks = std::numeric_limits<std::int64_t>::min();
// Seconds beyond these would overflow; one second of margin leaves room for the sub-second part.
constexpr std::int64_t kMaxSeconds = kMaxTicks / kTicksPerSecond - kUnixEpochSeconds - 1;
constexpr std::int64_t kMinSeconds = kMinTicks / kTicksPerSecond - kUnixEpochSeconds + 1;

}  // namespace

std::int64_t FileTimeFromUnixTime(std::int64_t seconds, std::int64_t nanoseconds) {
  if (seconds > kMaxSeconds) return kMaxTicks;
  if (seconds < kMinSeconds) return kMinTicks;
  return (seconds + kUnixEpochSeconds) * kTicksPerSecond + nanoseconds / kNanosecondsPerTick;
}

}  // namespace platform
