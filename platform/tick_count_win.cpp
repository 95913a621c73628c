#include "platform/tick_count.h"

#include <windows.h>

namespace platform {

std::uint64_t TickCountMs() { return GetTickCount64(); }

}  // namespace platform
