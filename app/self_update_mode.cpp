#include "app/self_update_mode.h"

#include "app/paths.h"
#include "log/log.h"
#include "platform/path_text.h"
#include "platform/process_start.h"
#include "text/ascii_case.h"

namespace {

constexpr wchar_t kLogCategory[] = L"self-update";

bool ReplaceAndRestart(const std::wstring& source, const std::wstring& target, const patch::SUnlockWait& wait,
                       std::wstring& errorText) {
  if (source.empty() || target.empty()) {
    errorText = L"Launcher self-update paths are invalid.";
    return false;
  }
  // The user gets the short sentence; the reason goes to the log.
  std::wstring replaceError;
  if (!patch::ReplaceLockedFile(platform::ToPath(source), platform::ToPath(target), replaceError, wait)) {
    logging::LogError(kLogCategory, replaceError);
    errorText = L"Could not replace the launcher executable.";
    return false;
  }
  platform::SProcessStart restart;
  restart.executable = target;
  restart.workingDirectory = platform::FromPath(platform::ToPath(target).parent_path());
  restart.newProcessGroup = true;
  std::uint32_t code = 0;
  if (!platform::StartProcess(restart, code)) {
    errorText = L"Could not start launcher self-update process.";
    return false;
  }
  return true;
}

}  // namespace

bool ParseSelfUpdateCommandLine(const std::vector<std::wstring>& arguments, std::wstring& target) {
  if (arguments.size() < 3 || !text::EqualsIgnoringAsciiCase(arguments[1], patch::kApplySelfUpdateSwitch)) return false;
  target = arguments[2];
  return true;
}

int ApplySelfUpdate(const std::wstring& source, const std::wstring& target, const patch::SUnlockWait& wait,
                    std::wstring& errorText) {
  if (ReplaceAndRestart(source, target, wait, errorText)) {
    logging::LogInfo(kLogCategory, L"applied");
    return 0;
  }
  logging::LogError(kLogCategory, L"failed: " + errorText);
  return 1;
}

int RunSelfUpdateMode(const std::wstring& target, std::wstring& errorText) {
  return ApplySelfUpdate(ModulePath(), target, patch::SUnlockWait{}, errorText);
}
