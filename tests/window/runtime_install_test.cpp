// The runtime installer's decisions with the download and the elevated
// start standing in for the network and the elevation prompt; the wait is
// real, on a process that ends with a chosen exit code.
#include "ui/win/runtime_install.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/temp_dir.h"

namespace {

const std::string kInstaller("MZ\x90\0\3\0\0\0", 8);
const std::string kErrorPage = "<!DOCTYPE html><html><body><h1>503</h1><p>Please try again later.</p></body></html>";

// A process that ends at once with `exitCode`, as an installer would.
HANDLE StartExiting(DWORD exitCode) {
  std::wstring commandLine = L"cmd.exe /c exit " + std::to_wstring(exitCode);
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                      &startup, &process)) {
    return nullptr;
  }
  CloseHandle(process.hThread);
  return process.hProcess;
}

struct SCase {
  const char* name;
  std::string downloaded;
  DWORD startError;  // 0: the installer starts and exits with exitCode
  DWORD exitCode;
  bool presentAfterwards;
  std::uint64_t waitLimitMs;
  bool installed;
  std::wstring detail;
};

TEST(RuntimeInstall, DecidesFromTheDownloadTheStartAndTheRuntimeItself) {
  constexpr auto kWait = webview::kInstallerWaitLimitMs;
  const SCase cases[] = {
      {"error page", kErrorPage, 0, 0, true, kWait, false, L"the downloaded installer was not a Windows executable"},
      {"elevation declined", kInstaller, ERROR_CANCELLED, 0, true, kWait, false, L"elevation declined"},
      {"no installer", kInstaller, ERROR_FILE_NOT_FOUND, 0, true, kWait, false,
       L"could not start the installer (Win32 2)"},
      {"odd exit code, runtime there", kInstaller, 0, 1603, true, kWait, true, L""},
      {"odd exit code, no runtime", kInstaller, 0, 1603, false, kWait, false, L"installer exit code 1603"},
      {"too slow", kInstaller, 0, 0, true, 0, false, L"the installer did not finish within 15 minutes"},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    const testing_support::TempDir folder;
    int starts = 0;
    bool present = false;
    std::filesystem::path installerSeen;
    webview::SRuntimeInstaller installer;
    installer.isRuntimePresent = [&] { return present; };
    installer.download = [&](const std::wstring& url, const std::wstring& target, const std::wstring& partial) {
      EXPECT_EQ(url, webview::kBootstrapperUrl);
      EXPECT_EQ(partial, target + L".part");
      folder.Write(std::filesystem::path(target).filename().string(), c.downloaded);
      installerSeen = target;
      return std::wstring();
    };
    installer.start = [&](const std::wstring& path, DWORD& error) -> HANDLE {
      ++starts;
      EXPECT_EQ(path, installerSeen.wstring());
      if (c.startError != 0) {
        error = c.startError;
        return nullptr;
      }
      present = c.presentAfterwards;
      return StartExiting(c.exitCode);
    };
    installer.waitLimitMs = c.waitLimitMs;

    std::wstring detail;
    EXPECT_EQ(webview::InstallRuntime(installer, folder.wide(), detail), c.installed);
    EXPECT_EQ(detail, c.detail);
    EXPECT_EQ(installerSeen.filename(), L"MicrosoftEdgeWebview2Setup.exe");
    EXPECT_EQ(starts, c.downloaded == kErrorPage ? 0 : 1);
    // The installer never stays behind, whether it was refused, run or not started.
    EXPECT_FALSE(std::filesystem::exists(installerSeen));
  }
}

}  // namespace
