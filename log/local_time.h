#pragma once
// The wall-clock time of the user's time zone, as the log stamps it.

namespace logging {

struct SLocalTime {
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  unsigned hour = 0;
  unsigned minute = 0;
  unsigned second = 0;
};

SLocalTime CurrentLocalTime();

}  // namespace logging
