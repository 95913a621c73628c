#pragma once
// Installing the WebView2 runtime once the user agreed: Microsoft's small
// online installer is downloaded, checked to be a Windows executable, run
// elevated and silently, and waited for with a live message loop; then the
// runtime is looked for again. The download and the start are seams, so
// tests stand in for the network and the elevation prompt.

#include "ui/win/win32.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "app/launcher_config.h"

namespace webview {

// Microsoft's public link to the evergreen runtime's online installer.
inline constexpr std::wstring_view kBootstrapperUrl = L"https://go.microsoft.com/fwlink/p/?LinkId=2124703";
inline constexpr std::uint64_t kInstallerWaitLimitMs = 900000;

struct SRuntimeInstaller {
  std::function<bool()> isRuntimePresent;
  // Fetches `url` into `partial`, then moves it onto `target`; empty on
  // success, else the failure's detail sentence.
  std::function<std::wstring(const std::wstring& url, const std::wstring& target, const std::wstring& partial)>
      download;
  // Starts the installer; its process handle (the caller closes it), or
  // null with the Win32 error in `error`.
  std::function<HANDLE(const std::wstring& installer, DWORD& error)> start;
  std::uint64_t waitLimitMs = kInstallerWaitLimitMs;
};

// The real seams: the launcher's HTTP client and ShellExecuteExW with "runas"
// and "/silent /install".
SRuntimeInstaller SystemRuntimeInstaller(const LauncherConfig& config, std::function<bool()> isRuntimePresent);

// A folder of the launcher's own in the system's temporary folder; empty
// when it cannot be made.
std::wstring InstallerFolder();

// Downloads the installer into `folder`, checks, runs and waits for it.
// True when the runtime is present at the end (whatever the installer's
// exit code); otherwise false with `detail` saying why.
bool InstallRuntime(const SRuntimeInstaller& installer, const std::wstring& folder, std::wstring& detail);

}  // namespace webview
