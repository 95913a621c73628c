#include "log/local_time.h"

#include <ctime>

namespace logging {

SLocalTime CurrentLocalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  return {static_cast<unsigned>(parts.tm_year + 1900), static_cast<unsigned>(parts.tm_mon + 1),
          static_cast<unsigned>(parts.tm_mday),        static_cast<unsigned>(parts.tm_hour),
          static_cast<unsigned>(parts.tm_min),         static_cast<unsigned>(parts.tm_sec)};
}

}  // namespace logging
