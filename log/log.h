#pragma once
// One plain-text log per process, "launcher.log" plus one previous generation,
// safe to write from any thread. Lines are flushed to disk before the call
// returns, and no failure of the log ever reaches the caller.

#include <string>
#include <string_view>

namespace logging {

enum class ELogLevel { Info = 0, Warning = 1, Error = 2 };

inline constexpr std::wstring_view kLogFileName = L"launcher.log";
inline constexpr std::wstring_view kPreviousLogFileName = L"launcher.prev.log";

// Points the log at a directory. Both redaction texts are masked in every
// message (normally both are the user's profile folder). An empty directory
// disables the log. Calling it again re-points the log.
void OpenLog(std::wstring_view logDirectory, std::wstring_view profilePath, std::wstring_view secondRedactionText);

// The file lines currently go to; empty while the log is disabled.
std::wstring CurrentLogFilePath();

// Category is a short word such as "start" or "patch".
void WriteLog(ELogLevel level, std::wstring_view category, std::wstring_view message);

inline void LogInfo(std::wstring_view category, std::wstring_view message) {
  WriteLog(ELogLevel::Info, category, message);
}
inline void LogWarning(std::wstring_view category, std::wstring_view message) {
  WriteLog(ELogLevel::Warning, category, message);
}
inline void LogError(std::wstring_view category, std::wstring_view message) {
  WriteLog(ELogLevel::Error, category, message);
}

}  // namespace logging
