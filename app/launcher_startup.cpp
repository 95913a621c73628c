#include "app/launcher_startup.h"

#include "app/paths.h"
#include "app/self_update_mode.h"
#include "log/log.h"
#include "patch/install_id.h"
#include "patch/legacy_migration.h"
#include "platform/environment.h"
#include "platform/os_description.h"

namespace {

constexpr wchar_t kLogCategory[] = L"start";
constexpr std::size_t kLoggedIdentityChars = 8;

// The identity of this installation, logged; empty when none could be had.
std::wstring ObtainInstallIdentity(const LauncherConfig& config) {
  std::wstring identity;
  std::wstring error;
  if (!patch::EnsureInstallId(ResolveGameDirectory(config.gameFolder, config.gameExecutable), identity, error)) {
    logging::LogWarning(kLogCategory, L"no install identity: " + error);
    return {};
  }
  logging::LogInfo(kLogCategory, L"install " + identity.substr(0, kLoggedIdentityChars));
  return identity;
}

// Two installations keep apart state, web profiles and locks; files of the
// folder earlier launchers shared are carried over once.
void UsePerInstallFolder(const std::wstring& identity) {
  const std::wstring base = platform::LocalAppDataDirectory();
  if (identity.empty() || base.empty()) return;
  SetInstallDataDirectory(InstallDataDirectory(base, identity));
  patch::MigrateLegacyFiles(LegacyDataDirectory(), RuntimeDirectory());
}

}  // namespace

int RunLauncher(const std::vector<std::wstring>& arguments, const LauncherConfig& config, const SLauncherShell& shell) {
  const std::wstring profile = platform::UserProfileDirectory();
  logging::OpenLog(ModuleDirectory(), profile, profile);
  logging::LogInfo(kLogCategory,
                   L"launcher " + config.launcherVersion + L" on " + platform::OperatingSystemDescription());

  if (std::wstring target; ParseSelfUpdateCommandLine(arguments, target)) {
    std::wstring error;
    const int exitCode = RunSelfUpdateMode(target, error);
    if (exitCode != 0 && !error.empty()) shell.showError(error);
    return exitCode;
  }
  // Before anything else is set up, so a misconfigured build leaves nothing but its log.
  if (!IsHttpsPatchHost(config.patchHost)) {
    shell.showError(kMisconfiguredHostText);
    return 1;
  }
  if (shell.prepareProcess && !shell.prepareProcess()) return 0;

  const std::wstring identity = ObtainInstallIdentity(config);
  UsePerInstallFolder(identity);
  if (!shell.takeSingleInstance(IsInstallIdentity(identity) ? identity : std::wstring())) return 0;
  if (shell.beforeWindow) shell.beforeWindow();

  int exitCode = 0;
  std::wstring error;
  if (!shell.runWindow(exitCode, error)) {
    shell.showError(error.empty() ? std::wstring(kNotStartedText) : error);
    return 0;
  }
  return exitCode;
}
