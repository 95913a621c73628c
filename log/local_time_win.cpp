#include "log/local_time.h"

#include <windows.h>

namespace logging {

SLocalTime CurrentLocalTime() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

}  // namespace logging
