// The launcher's start-up as a user meets it, under Wine on Xvfb, where no
// WebView2 runtime is installed: boxes are read through the window system
// and answered like a user would. Each launcher runs from an installation
// of its own (executable and WebView2Loader.dll beside an empty game folder).
#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using launch_test::Eventually;

constexpr wchar_t kLauncherCaption[] = L"Vardeni Launcher";
constexpr wchar_t kMisconfigured[] =
    L"This build is misconfigured: the patch host is not an https:// URL.\n"
    L"The launcher will not fetch updates over an unauthenticated channel.";
constexpr wchar_t kInstallQuestion[] =
    L"Vardeni needs a Microsoft component (Edge WebView2) that isn't installed on this PC.\n\nInstall it now?";
constexpr wchar_t kRuntimeNotFound[] = L"WebView2 runtime not found (0x80070002)";
constexpr wchar_t kWindowClass[] = L"VardeniLauncherWindow";

// A copy of `launcher` (built beside this test) in a new installation under `folder`.
fs::path Install(const fs::path& folder, const wchar_t* launcher) {
  wchar_t self[MAX_PATH];
  GetModuleFileNameW(nullptr, self, MAX_PATH);
  const fs::path built = fs::path(self).parent_path();
  fs::create_directories(folder / L"app");
  fs::copy_file(built / launcher, folder / L"vardeni-launcher.exe");
  fs::copy_file(built / L"WebView2Loader.dll", folder / L"WebView2Loader.dll");
  return folder / L"vardeni-launcher.exe";
}

class CLauncher {
 public:
  explicit CLauncher(const fs::path& executable) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    const std::wstring folder = executable.parent_path().wstring();
    EXPECT_TRUE(CreateProcessW(executable.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(),
                               &startup, &process_));
    CloseHandle(process_.hThread);
  }
  ~CLauncher() {
    if (!ExitCode()) TerminateProcess(process_.hProcess, 1);
    CloseHandle(process_.hProcess);
  }
  std::optional<DWORD> ExitCode() const {
    DWORD code = 0;
    if (WaitForSingleObject(process_.hProcess, 0) != WAIT_OBJECT_0) return std::nullopt;
    GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }
  std::optional<DWORD> WaitForExit() const {
    WaitForSingleObject(process_.hProcess, 30000);
    return ExitCode();
  }
  DWORD Id() const { return process_.dwProcessId; }

 private:
  PROCESS_INFORMATION process_{};
};

// A top-level window of process `id`: of `className`, or any visible one when none is given.
HWND FindWindowOf(DWORD id, const wchar_t* className = nullptr) {
  struct SSearch {
    DWORD id;
    const wchar_t* className;
    HWND found;
  } search{id, className, nullptr};
  EnumWindows(
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& search = *reinterpret_cast<SSearch*>(parameter);
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        wchar_t name[64] = {};
        GetClassNameW(window, name, 64);
        const bool wanted = search.className ? wcscmp(name, search.className) == 0 : IsWindowVisible(window);
        if (owner != search.id || !wanted) return TRUE;
        search.found = window;
        return FALSE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

std::wstring WindowText(HWND window) {
  wchar_t text[512] = {};
  GetWindowTextW(window, text, 512);
  return text;
}

struct SBox {
  HWND window = nullptr;
  std::wstring caption;
  std::wstring text;
};

// The next message box the launcher shows (a box exists a moment before it is filled in and shown).
SBox WaitForBox(const CLauncher& launcher) {
  SBox box;
  const auto shown = [&] {
    box.window = FindWindowOf(launcher.Id(), L"#32770");
    return box.window != nullptr && IsWindowVisible(box.window);
  };
  if (!Eventually([&] { return shown() || launcher.ExitCode(); }) || !shown()) {
    ADD_FAILURE() << "no message box appeared";
    return box;
  }
  box.caption = WindowText(box.window);
  EnumChildWindows(
      box.window,
      [](HWND child, LPARAM parameter) -> BOOL {
        wchar_t name[16] = {};
        GetClassNameW(child, name, 16);
        auto& text = *reinterpret_cast<std::wstring*>(parameter);
        if (_wcsicmp(name, L"Static") == 0 && text.empty()) text = WindowText(child);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&box.text));
  return box;
}

void Press(const SBox& box, int button) {
  PostMessageW(box.window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), 0);
  EXPECT_TRUE(Eventually([&] { return !IsWindow(box.window); }));
}

class LauncherStory : public testing::Test {
 protected:
  // Children inherit it: per-install data folders land in the test's folder.
  void SetUp() override { SetEnvironmentVariableW(L"LOCALAPPDATA", (root_.path() / L"local").c_str()); }
  testing_support::TempDir root_;
};

TEST_F(LauncherStory, AnHttpBuildShowsOnlyTheMisconfigurationBoxAndExitsOne) {
  const fs::path executable = Install(root_.path() / L"http", L"vl_http_launcher.exe");
  const CLauncher launcher(executable);
  const SBox box = WaitForBox(launcher);
  EXPECT_EQ(box.caption, kLauncherCaption);
  EXPECT_EQ(box.text, kMisconfigured);
  // Nothing past the check ran: no window, no identity (so no mutex named after one), no mutex without one.
  EXPECT_EQ(FindWindowOf(launcher.Id(), kWindowClass), nullptr);
  EXPECT_FALSE(fs::exists(executable.parent_path() / L"app" / L"install.id"));
  EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, L"Local\\VardeniLauncherWindow.SingleInstance"), nullptr);
  Press(box, IDOK);
  EXPECT_EQ(launcher.WaitForExit(), 1u);
}

// After "No" the window opens and its page host reports the missing runtime; after OK the launcher ends.
void DeclineAndFinish(const CLauncher& launcher) {
  Press(WaitForBox(launcher), IDNO);
  const SBox error = WaitForBox(launcher);
  EXPECT_EQ(error.caption, kLauncherCaption);
  EXPECT_EQ(error.text, kRuntimeNotFound);
  EXPECT_NE(FindWindowOf(launcher.Id(), kWindowClass), nullptr);
  Press(error, IDOK);
  EXPECT_EQ(launcher.WaitForExit(), 0u);
}

TEST_F(LauncherStory, OneLauncherPerInstallationAndTheMissingRuntimeIsOfferedThenReported) {
  const fs::path first = Install(root_.path() / L"first", L"vardeni-launcher.exe");
  const CLauncher launcher(first);
  const SBox question = WaitForBox(launcher);
  EXPECT_EQ(question.caption, L"Vardeni");
  EXPECT_EQ(question.text, kInstallQuestion);

  // The same installation again finds the lock, shows nothing and leaves at once.
  const CLauncher again(first);
  bool showedSomething = false;
  EXPECT_TRUE(Eventually([&] {
    showedSomething = showedSomething || FindWindowOf(again.Id()) != nullptr;
    return again.ExitCode().has_value();
  }));
  EXPECT_EQ(again.ExitCode(), 0u);
  EXPECT_FALSE(showedSomething);

  // Another installation is not held back by the first.
  const CLauncher elsewhere(Install(root_.path() / L"other", L"vardeni-launcher.exe"));
  DeclineAndFinish(elsewhere);
  DeclineAndFinish(launcher);
}

}  // namespace
