#pragma once
// Builds one log line: "2024-05-01 13:45:09 INFO  [start] message" in UTF-8
// with a closing line feed.

#include <string>
#include <string_view>

#include "log/local_time.h"
#include "log/log.h"

namespace logging {

// Carriage returns and line feeds in the message become spaces (a CR LF pair
// one space), so a line is always one line.
std::string FormatLogLine(const SLocalTime& time, ELogLevel level, std::wstring_view category,
                          std::wstring_view message);

}  // namespace logging
