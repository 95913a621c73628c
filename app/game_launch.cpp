#include "app/game_launch.h"

#include <filesystem>
#include <functional>
#include <vector>

#include "app/game_launch_os.h"
#include "app/paths.h"
#include "log/log.h"
#include "patch/seeding.h"
#include "platform/path_text.h"
#include "platform/process_list.h"

namespace {

constexpr wchar_t kLogCategory[] = L"play";

using SeedReport = std::function<void(bool failed, const std::wstring& line)>;

std::wstring FolderOf(const std::wstring& path) { return platform::FromPath(platform::ToPath(path).parent_path()); }

void ReportSeeding(const patch::SSeedResult& seeded, const SeedReport& report) {
  for (const std::wstring& name : seeded.written) report(false, L"[seed] wrote missing " + name);
  for (const std::wstring& name : seeded.failed) report(true, L"[seed] FAILED to write " + name);
}

bool ResolveSeedAndStart(const LauncherConfig& config, const SeedReport& report, std::wstring& error) {
  const std::wstring executable = GameExecutablePath(config);
  if (!std::filesystem::exists(platform::ToPath(executable))) {
    error = L"Configured game executable not found: " + executable;
    return false;
  }
  ReportSeeding(patch::SeedMissingConfigs(FolderOf(executable)), report);
  return StartGameProcess(executable, error);
}

}  // namespace

bool LaunchGame(std::wstring& error, const LauncherConfig& config) {
  return ResolveSeedAndStart(
      config, [](bool, const std::wstring& line) { WriteDebuggerOutput(line + L"\n"); }, error);
}

bool PrepareGameLaunch(std::wstring& errorText, const LauncherConfig& config) {
  const auto toLog = [](bool failed, const std::wstring& line) {
    logging::WriteLog(failed ? logging::ELogLevel::Warning : logging::ELogLevel::Info, kLogCategory, line);
  };
  return ResolveSeedAndStart(config, toLog, errorText);
}

bool StartGameProcess(const std::wstring& executablePath, std::wstring& error) {
  std::vector<SStartAttempt> failures;
  if (StartGameExecutable(executablePath, FolderOf(executablePath), failures)) return true;
  error = L"Could not start game executable: " + executablePath;
  for (const SStartAttempt& failure : failures) {
    error += L" | " + failure.method + L": " + FormatWindowsError(failure.errorCode);
  }
  logging::LogError(kLogCategory, error);
  return false;
}

bool IsGameNotRunning(std::wstring& runningName, std::wstring& error, const LauncherConfig& config) {
  const std::wstring name = platform::FromPath(platform::ToPath(GameExecutablePath(config)).filename());
  if (name.empty()) return true;
  if (platform::FindProcessByFileName(name) != platform::EProcessSearch::Found) return true;
  runningName = name;
  return false;
}

std::wstring FormatWindowsError(std::uint32_t code) {
  if (code == 0) return {};
  return FormatSystemMessage(code, RawSystemMessage(code));
}

std::wstring FormatSystemMessage(std::uint32_t code, std::wstring message) {
  while (!message.empty() &&
         (message.back() == L'\r' || message.back() == L'\n' || message.back() == L' ' || message.back() == L'.')) {
    message.pop_back();
  }
  const std::wstring number = std::to_wstring(code);
  return message.empty() ? L"Windows error " + number : message + L" (" + number + L")";
}
