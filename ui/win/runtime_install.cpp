// The runtime installer's download, checks, elevated start and pumping
// wait; see runtime_install.h.
#include "ui/win/runtime_install.h"

#include <shellapi.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "net/http_client.h"
#include "platform/path_text.h"

namespace webview {
namespace {

constexpr wchar_t kInstallerFileName[] = L"MicrosoftEdgeWebview2Setup.exe";
constexpr wchar_t kPartialSuffix[] = L".part";
constexpr wchar_t kOwnTempFolder[] = L"VardeniLauncher";
constexpr wchar_t kInstallerVerb[] = L"runas";
constexpr wchar_t kInstallerParameters[] = L"/silent /install";
// The online installer takes about 2 MB.
constexpr std::uint64_t kMaxInstallerBytes = 64 * 1024 * 1024;

constexpr wchar_t kNoTempFolder[] = L"no writable temporary directory";
constexpr wchar_t kDownloadStatusPrefix[] = L"download failed (HTTP ";
constexpr wchar_t kNotExecutable[] = L"the downloaded installer was not a Windows executable";
constexpr wchar_t kTooLarge[] = L"the download was larger than an installer can be";
constexpr wchar_t kElevationDeclined[] = L"elevation declined";
constexpr wchar_t kStartFailedPrefix[] = L"could not start the installer (Win32 ";
constexpr wchar_t kTimedOut[] = L"the installer did not finish within 15 minutes";
constexpr wchar_t kExitCodePrefix[] = L"installer exit code ";
constexpr wchar_t kNotStarted[] = L"the installer could not be started";

// Removes the installer however the attempt ends.
class CInstallerFile {
 public:
  explicit CInstallerFile(std::filesystem::path path) : path_(std::move(path)) {}
  ~CInstallerFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Every Windows executable begins with the DOS header's "MZ"; an error page
// served with status 200 does not.
bool IsWindowsExecutable(const std::filesystem::path& file) {
  std::array<char, 2> start{};
  std::ifstream stream(file, std::ios::binary);
  return stream.read(start.data(), start.size()) && start[0] == 'M' && start[1] == 'Z';
}

std::wstring Download(const LauncherConfig& config, const std::wstring& url, const std::wstring& target,
                      const std::wstring& partial) {
  // A part left by an earlier try may belong to another installer release: start afresh.
  std::error_code ignored;
  std::filesystem::remove(platform::ToPath(partial), ignored);
  try {
    const net::SDownloadResult result =
        net::CHttpClient(config).DownloadFile(url, platform::ToPath(target), platform::ToPath(partial),
                                              kMaxInstallerBytes, {});
    if (result.ok) return {};
    if (result.tooLarge) return kTooLarge;
    if (result.status != 0) return kDownloadStatusPrefix + std::to_wstring(result.status) + L")";
    return result.error;
  } catch (const std::exception&) {
    // The client throws only when the folder cannot be written.
    return kNoTempFolder;
  }
}

HANDLE StartElevated(const std::wstring& installer, DWORD& error) {
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  info.lpVerb = kInstallerVerb;
  info.lpFile = installer.c_str();
  info.lpParameters = kInstallerParameters;
  info.nShow = SW_SHOWNORMAL;
  if (!ShellExecuteExW(&info) || info.hProcess == nullptr) {
    error = GetLastError();
    return nullptr;
  }
  return info.hProcess;
}

enum class EWaitEnd { Exited, TimedOut, Failed };

// Waits for `process` for at most `limitMs` while dispatching every window
// message, so the program stays responsive during a long install.
EWaitEnd WaitPumpingMessages(HANDLE process, std::uint64_t limitMs) {
  const std::uint64_t start = GetTickCount64();
  for (;;) {
    const std::uint64_t elapsed = GetTickCount64() - start;
    if (elapsed >= limitMs) return EWaitEnd::TimedOut;
    const DWORD woke =
        MsgWaitForMultipleObjects(1, &process, FALSE, static_cast<DWORD>(limitMs - elapsed), QS_ALLINPUT);
    if (woke == WAIT_OBJECT_0) return EWaitEnd::Exited;
    if (woke == WAIT_FAILED) return EWaitEnd::Failed;
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
}

}  // namespace

SRuntimeInstaller SystemRuntimeInstaller(const LauncherConfig& config, std::function<bool()> isRuntimePresent) {
  SRuntimeInstaller installer;
  installer.isRuntimePresent = std::move(isRuntimePresent);
  installer.download = [&config](const std::wstring& url, const std::wstring& target, const std::wstring& partial) {
    return Download(config, url, target, partial);
  };
  installer.start = &StartElevated;
  return installer;
}

std::wstring InstallerFolder() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error) / kOwnTempFolder;
  if (error) return {};
  std::filesystem::create_directories(folder, error);
  return error ? std::wstring() : platform::FromPath(folder);
}

bool InstallRuntime(const SRuntimeInstaller& installer, const std::wstring& folder, std::wstring& detail) {
  if (folder.empty()) {
    detail = kNoTempFolder;
    return false;
  }
  const std::filesystem::path target = platform::ToPath(folder) / kInstallerFileName;
  const std::wstring targetText = platform::FromPath(target);
  detail = installer.download(std::wstring(kBootstrapperUrl), targetText, targetText + kPartialSuffix);
  if (!detail.empty()) return false;

  const CInstallerFile file(target);
  if (!IsWindowsExecutable(file.Path())) {
    detail = kNotExecutable;
    return false;
  }
  DWORD startError = 0;
  const HANDLE process = installer.start(targetText, startError);
  if (process == nullptr) {
    detail = startError == ERROR_CANCELLED ? std::wstring(kElevationDeclined)
                                           : kStartFailedPrefix + std::to_wstring(startError) + L")";
    return false;
  }
  const EWaitEnd end = WaitPumpingMessages(process, installer.waitLimitMs);
  std::optional<DWORD> exitCode;
  if (DWORD code = 0; end == EWaitEnd::Exited && GetExitCodeProcess(process, &code)) exitCode = code;
  CloseHandle(process);
  if (end == EWaitEnd::TimedOut) {
    detail = kTimedOut;
    return false;
  }
  // Installers report odd codes (already installed, reboot wanted): only the runtime itself counts.
  if (installer.isRuntimePresent()) return true;
  detail = exitCode ? kExitCodePrefix + std::to_wstring(*exitCode) : std::wstring(kNotStarted);
  return false;
}

}  // namespace webview
