// The Windows pieces of the launcher's start-up (see launcher_startup.h for
// the order they run in) and its shutdown: COM and the instance lock are let
// go before the controller is destroyed.
#include "app/launcher_startup_win.h"

#include <objbase.h>
#include <shellapi.h>

#include <memory>
#include <string>
#include <vector>

#include "app/app_controller.h"
#include "app/launcher_startup.h"
#include "app/paths.h"
#include "ui/win/error_box.h"
#include "ui/win/main_window.h"
#include "ui/win/runtime_bootstrap.h"
#include "ui/win/system_function.h"

namespace {

constexpr wchar_t kMutexPrefix[] = L"Local\\";
constexpr wchar_t kMutexSuffix[] = L".SingleInstance";

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

}  // namespace

int RunWindowsLauncher(HINSTANCE instance, const LauncherConfig& config) {
  bool comStarted = false;
  HANDLE instanceLock = nullptr;
  std::unique_ptr<CApp> app;  // destroyed last, after COM and the lock are let go

  SLauncherShell shell;
  shell.showError = [&](const std::wstring& text) { ui::ShowErrorBox(nullptr, config.displayName, text); };
  shell.prepareProcess = [&] {
    HardenDllSearch();
    SetDpiAwareness();
    comStarted = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    return comStarted;
  };
  shell.takeSingleInstance = [&](const std::wstring& identity) {
    instanceLock = CreateMutexW(nullptr, TRUE, MutexName(config, identity).c_str());
    if (instanceLock == nullptr) return false;
    if (GetLastError() != ERROR_ALREADY_EXISTS) return true;
    // Another launcher of this installation runs: it comes forward, this one shows nothing.
    BringForward(config);
    CloseHandle(instanceLock);
    instanceLock = nullptr;
    return false;
  };
  // Whatever the bootstrap reports, the window shows the page's own failure if it has to.
  shell.beforeWindow = [&] { webview::EnsureRuntime(nullptr, config); };
  shell.runWindow = [&](int& exitCode, std::wstring& errorText) {
    SAppSettings settings = DefaultAppSettings();
    settings.config = &config;
    app = std::make_unique<CApp>(std::move(settings));
    ui::CMainWindow window(config);
    if (!window.Create(instance, *app, errorText)) return false;
    exitCode = RunMessageLoop();
    return true;
  };

  const int exitCode = RunLauncher(CommandLineArguments(), config, shell);
  if (comStarted) CoUninitialize();
  if (instanceLock != nullptr) {
    ReleaseMutex(instanceLock);
    CloseHandle(instanceLock);
  }
  app.reset();
  return exitCode;
}
