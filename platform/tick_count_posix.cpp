#include "platform/tick_count.h"

#include <time.h>

namespace platform {

std::uint64_t TickCountMs() {
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000u + static_cast<std::uint64_t>(now.tv_nsec) / 1000000u;
}

}  // namespace platform
