#include "log/log.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

#include "log/local_time.h"
#include "log/log_line.h"
#include "log/redaction.h"
#include "platform/path_text.h"

namespace logging {
namespace {

// A line that would take the file past 1 MiB starts a new generation.
constexpr std::uintmax_t kRotateAtBytes = 1'048'577;

struct SLogState {
  std::mutex mutex;
  bool enabled = false;
  std::filesystem::path logFile;
  std::filesystem::path previousLogFile;
  std::wstring profilePath;
  std::wstring secondRedactionText;
};

// Never destroyed, so code running during static destruction can still log.
SLogState& State() {
  static SLogState* const state = new SLogState();
  return *state;
}

void RotateIfFull(const SLogState& state, std::uintmax_t lineBytes) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(state.logFile, error);
  if (error || size + lineBytes < kRotateAtBytes) return;
  std::filesystem::remove(state.previousLogFile, error);
  std::filesystem::rename(state.logFile, state.previousLogFile, error);
  // Without a previous generation the log still must not grow without bound.
  if (error) std::filesystem::resize_file(state.logFile, 0, error);
}

// Opened and closed per line so every line is on disk and another process may
// read or delete the file between lines.
void AppendLine(const std::filesystem::path& file, const std::string& line) {
  std::ofstream out(file, std::ios::binary | std::ios::app);
  out.write(line.data(), static_cast<std::streamsize>(line.size()));
}

}  // namespace

void OpenLog(std::wstring_view logDirectory, std::wstring_view profilePath, std::wstring_view secondRedactionText) {
  SLogState& state = State();
  const std::lock_guard lock(state.mutex);
  const std::filesystem::path directory = platform::ToPath(logDirectory);
  state.enabled = !logDirectory.empty();
  state.logFile = directory / platform::ToPath(kLogFileName);
  state.previousLogFile = directory / platform::ToPath(kPreviousLogFileName);
  state.profilePath = profilePath;
  state.secondRedactionText = secondRedactionText;
}

std::wstring CurrentLogFilePath() {
  SLogState& state = State();
  const std::lock_guard lock(state.mutex);
  return state.enabled ? platform::FromPath(state.logFile) : std::wstring();
}

void WriteLog(ELogLevel level, std::wstring_view category, std::wstring_view message) {
  SLogState& state = State();
  const std::lock_guard lock(state.mutex);
  if (!state.enabled) return;
  const std::wstring redacted =
      RedactPath(RedactPath(message, state.profilePath, kProfileMask), state.secondRedactionText, kProfileMask);
  const std::string line = FormatLogLine(CurrentLocalTime(), level, category, redacted);
  RotateIfFull(state, line.size());
  AppendLine(state.logFile, line);
}

}  // namespace logging
