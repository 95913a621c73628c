#pragma once
#include <cstdint>

namespace platform {

// Milliseconds since boot, monotonic (GetTickCount64 / CLOCK_BOOTTIME).
std::uint64_t TickCountMs();

}  // namespace platform
