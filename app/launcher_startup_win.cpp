// The launcher's start-up in its fixed order, and its shutdown; see
// launcher_startup.h. The order matters: a misconfigured build must stop
// before it creates anything but the log, and the single-instance lock must
// be held before the bootstrap or the window could appear twice.
#include "app/launcher_startup.h"

#include <objbase.h>
#include <shellapi.h>

#include <memory>
#include <string>
#include <vector>

#include "app/app_controller.h"
#include "app/paths.h"
#include "app/self_update_mode.h"
#include "log/log.h"
#include "patch/install_id.h"
#include "patch/legacy_migration.h"
#include "platform/environment.h"
#include "platform/os_description.h"
#include "ui/win/error_box.h"
#include "ui/win/main_window.h"
#include "ui/win/runtime_bootstrap.h"
#include "ui/win/system_function.h"

namespace {

constexpr wchar_t kLogCategory[] = L"start";
constexpr wchar_t kMisconfiguredError[] =
    L"This build is misconfigured: the patch host is not an https:// URL.\n"
    L"The launcher will not fetch updates over an unauthenticated channel.";
constexpr wchar_t kNotStartedError[] = L"The launcher could not be started.";
constexpr wchar_t kMutexPrefix[] = L"Local\\";
constexpr wchar_t kMutexSuffix[] = L".SingleInstance";
constexpr std::size_t kLoggedIdentityChars = 8;

// SetProcessDpiAwarenessContext's per-monitor version 2.
const auto kPerMonitorAwareV2 = reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-4));

std::vector<std::wstring> CommandLineArguments() {
  int count = 0;
  LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::wstring> result;
  if (arguments == nullptr) return result;
  result.assign(arguments, arguments + count);
  LocalFree(arguments);
  return result;
}

// Later implicit loads must resolve to the system's copies, never to a DLL
// planted in the launcher's or the current folder. Failures change nothing.
void HardenDllSearch() {
  using SetDefaultDllDirectoriesFunction = BOOL(WINAPI*)(DWORD);
  if (const auto setDefault =
          ui::SystemFunction<SetDefaultDllDirectoriesFunction>(L"kernel32.dll", "SetDefaultDllDirectories")) {
    setDefault(LOAD_LIBRARY_SEARCH_SYSTEM32);
  }
  SetDllDirectoryW(L"");
  for (const wchar_t* dll : {L"mscoree.dll", L"winhttp.dll"}) {
    LoadLibraryExW(dll, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  }
}

// Per-monitor awareness where the system has it, else system awareness.
void SetDpiAwareness() {
  using SetContextFunction = BOOL(WINAPI*)(HANDLE);
  using SetAwareFunction = BOOL(WINAPI*)();
  const auto setContext = ui::SystemFunction<SetContextFunction>(L"user32.dll", "SetProcessDpiAwarenessContext");
  const auto setAware = ui::SystemFunction<SetAwareFunction>(L"user32.dll", "SetProcessDPIAware");
  if (setContext != nullptr && setContext(kPerMonitorAwareV2)) return;
  if (setAware != nullptr) setAware();
}

// The installation's identity; empty (with a warning) when it cannot be had.
std::wstring InstallIdentity(const LauncherConfig& config) {
  std::wstring identity;
  std::wstring error;
  if (!patch::EnsureInstallId(ResolveGameDirectory(config.gameFolder, config.gameExecutable), identity, error)) {
    logging::LogWarning(kLogCategory, L"no install identity: " + error);
    return {};
  }
  logging::LogInfo(kLogCategory, L"install " + identity.substr(0, kLoggedIdentityChars));
  return identity;
}

// Per-install runtime folder, seeded once from the folder earlier launchers shared.
void UseInstallDataFolder(const std::wstring& identity) {
  const std::wstring localAppData = platform::LocalAppDataDirectory();
  if (identity.empty() || localAppData.empty()) return;
  SetInstallDataDirectory(InstallDataDirectory(localAppData, identity));
  patch::MigrateLegacyFiles(LegacyDataDirectory(), RuntimeDirectory());
}

std::wstring MutexName(const LauncherConfig& config, const std::wstring& identity) {
  std::wstring name = kMutexPrefix + config.windowClass + kMutexSuffix;
  if (IsInstallIdentity(identity)) name += L"." + identity;
  return name;
}

// Lifts the running launcher's window above the others without leaving it topmost.
void BringForward(const LauncherConfig& config) {
  const HWND other = FindWindowW(config.windowClass.c_str(), nullptr);
  if (other == nullptr) return;
  ShowWindow(other, IsIconic(other) ? SW_RESTORE : SW_SHOW);
  SetForegroundWindow(other);
  BringWindowToTop(other);
  SetWindowPos(other, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  SetWindowPos(other, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

int RunMessageLoop() {
  MSG message{};
  for (;;) {
    const BOOL got = GetMessageW(&message, nullptr, 0, 0);
    if (got == 0 || got == -1) return static_cast<int>(message.wParam);
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

// The bootstrap, the controller and the window; the controller is handed
// back so it is destroyed last.
int RunWindow(HINSTANCE instance, const LauncherConfig& config, std::unique_ptr<CApp>& app) {
  // Whatever the bootstrap reports, the window shows the page's own failure if it has to.
  webview::EnsureRuntime(nullptr, config);
  SAppSettings settings = DefaultAppSettings();
  settings.config = &config;
  app = std::make_unique<CApp>(std::move(settings));
  ui::CMainWindow window(config);
  std::wstring error;
  if (!window.Create(instance, *app, error)) {
    ui::ShowErrorBox(nullptr, config.displayName, error.empty() ? kNotStartedError : error);
    return 0;
  }
  return RunMessageLoop();
}

int RunNormal(HINSTANCE instance, const LauncherConfig& config) {
  if (!IsHttpsPatchHost(config.patchHost)) {
    ui::ShowErrorBox(nullptr, config.displayName, kMisconfiguredError);
    return 1;
  }
  HardenDllSearch();
  SetDpiAwareness();
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 0;

  const std::wstring identity = InstallIdentity(config);
  UseInstallDataFolder(identity);

  const HANDLE instanceLock = CreateMutexW(nullptr, TRUE, MutexName(config, identity).c_str());
  if (instanceLock == nullptr) {
    CoUninitialize();
    return 0;
  }
  if (GetLastError() == ERROR_ALREADY_EXISTS) {
    // Another launcher of this installation runs: it comes forward, this one shows nothing.
    BringForward(config);
    CloseHandle(instanceLock);
    CoUninitialize();
    return 0;
  }

  std::unique_ptr<CApp> app;
  const int exitCode = RunWindow(instance, config, app);
  CoUninitialize();
  ReleaseMutex(instanceLock);
  CloseHandle(instanceLock);
  app.reset();
  return exitCode;
}

}  // namespace

int RunLauncher(HINSTANCE instance, const LauncherConfig& config) {
  const std::wstring profile = platform::UserProfileDirectory();
  logging::OpenLog(ModuleDirectory(), profile, profile);
  logging::LogInfo(kLogCategory,
                   L"launcher " + config.launcherVersion + L" on " + platform::OperatingSystemDescription());

  std::wstring target;
  if (ParseSelfUpdateCommandLine(CommandLineArguments(), target)) {
    std::wstring error;
    const int exitCode = RunSelfUpdateMode(target, error);
    if (exitCode != 0 && !error.empty()) ui::ShowErrorBox(nullptr, config.displayName, error);
    return exitCode;
  }
  return RunNormal(instance, config);
}
