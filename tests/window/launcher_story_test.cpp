// The launcher's start-up as a user meets it, run under Wine on Xvfb, where
// no WebView2 runtime is installed: the boxes are read through the window
// system and answered like a user would. Each launcher runs from an
// installation of its own (the executable and WebView2Loader.dll beside an
// empty game folder) with its data folder inside the test's folder.
#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

constexpr wchar_t kLauncherCaption[] = L"Vardeni Launcher";
constexpr wchar_t kBootstrapCaption[] = L"Vardeni";
constexpr wchar_t kMisconfigured[] =
    L"This build is misconfigured: the patch host is not an https:// URL.\n"
    L"The launcher will not fetch updates over an unauthenticated channel.";
constexpr wchar_t kInstallQuestion[] =
    L"Vardeni needs a Microsoft component (Edge WebView2) that isn't installed on this PC.\n\nInstall it now?";
constexpr wchar_t kRuntimeNotFound[] = L"WebView2 runtime not found (0x80070002)";
constexpr wchar_t kWindowClass[] = L"VardeniLauncherWindow";
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr auto kPatience = std::chrono::seconds(30);

fs::path OwnFolder() {
  wchar_t buffer[MAX_PATH];
  GetModuleFileNameW(nullptr, buffer, MAX_PATH);
  return fs::path(buffer).parent_path();
}

// A copy of `launcher` (built beside this test) installed in `folder`.
fs::path Install(const fs::path& folder, const wchar_t* launcher) {
  fs::create_directories(folder / L"app");
  fs::copy_file(OwnFolder() / launcher, folder / L"vardeni-launcher.exe");
  fs::copy_file(OwnFolder() / L"WebView2Loader.dll", folder / L"WebView2Loader.dll");
  return folder / L"vardeni-launcher.exe";
}

template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}

class CLauncher {
 public:
  explicit CLauncher(const fs::path& executable) {
    std::wstring commandLine = L"\"" + executable.wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    const std::wstring folder = executable.parent_path().wstring();
    EXPECT_TRUE(CreateProcessW(executable.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               folder.c_str(), &startup, &process_));
    if (process_.hThread != nullptr) CloseHandle(process_.hThread);
  }
  ~CLauncher() {
    if (!ExitCode()) TerminateProcess(process_.hProcess, 1);
    CloseHandle(process_.hProcess);
  }
  DWORD Id() const { return process_.dwProcessId; }
  std::optional<DWORD> ExitCode() const {
    DWORD code = 0;
    if (WaitForSingleObject(process_.hProcess, 0) != WAIT_OBJECT_0 || !GetExitCodeProcess(process_.hProcess, &code)) {
      return std::nullopt;
    }
    return code;
  }
  std::optional<DWORD> WaitForExit() const {
    Eventually([&] { return ExitCode().has_value(); });
    return ExitCode();
  }

 private:
  PROCESS_INFORMATION process_{};
};

struct SWindowQuery {
  DWORD processId;
  const wchar_t* className;
  HWND found = nullptr;
};

// A visible top-level window of `processId`, of `className` when one is given.
HWND FindWindowOf(DWORD processId, const wchar_t* className = nullptr) {
  SWindowQuery query{processId, className};
  EnumWindows(
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& query = *reinterpret_cast<SWindowQuery*>(parameter);
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        wchar_t name[64] = {};
        GetClassNameW(window, name, 64);
        if (owner != query.processId || (query.className != nullptr && wcscmp(name, query.className) != 0)) {
          return TRUE;
        }
        if (!IsWindowVisible(window) && query.className == nullptr) return TRUE;
        query.found = window;
        return FALSE;
      },
      reinterpret_cast<LPARAM>(&query));
  return query.found;
}

std::wstring WindowText(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

struct SBox {
  HWND window = nullptr;
  std::wstring caption;
  std::wstring text;
};

// The message box the launcher shows next: its caption and its message text.
SBox WaitForBox(const CLauncher& launcher) {
  SBox box;
  // A box exists a moment before it is filled in and shown.
  const auto shown = [&] {
    box.window = FindWindowOf(launcher.Id(), kDialogClass);
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
  PostMessageW(box.window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), reinterpret_cast<LPARAM>(nullptr));
  EXPECT_TRUE(Eventually([&] { return !IsWindow(box.window); }));
}

class LauncherStory : public testing::Test {
 protected:
  void SetUp() override {
    // Children inherit it: per-install data folders land in the test's folder.
    SetEnvironmentVariableW(L"LOCALAPPDATA", (root_.path() / L"local").c_str());
  }
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
  const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"Local\\VardeniLauncherWindow.SingleInstance");
  EXPECT_EQ(mutex, nullptr);
  if (mutex != nullptr) CloseHandle(mutex);

  Press(box, IDOK);
  EXPECT_EQ(launcher.WaitForExit(), 1u);
}

// Without a runtime the user is asked; after "No" the window opens and its
// page host reports the missing runtime; after OK the launcher ends.
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
  const fs::path other = Install(root_.path() / L"other", L"vardeni-launcher.exe");

  const CLauncher launcher(first);
  const SBox question = WaitForBox(launcher);
  EXPECT_EQ(question.caption, kBootstrapCaption);
  EXPECT_EQ(question.text, kInstallQuestion);

  // The same installation again: it finds the lock, shows nothing and leaves at once.
  const CLauncher again(first);
  bool showedSomething = false;
  EXPECT_TRUE(Eventually([&] {
    showedSomething = showedSomething || FindWindowOf(again.Id()) != nullptr;
    return again.ExitCode().has_value();
  }));
  EXPECT_EQ(again.ExitCode(), 0u);
  EXPECT_FALSE(showedSomething);

  // Another installation is not held back by the first.
  const CLauncher elsewhere(other);
  EXPECT_EQ(WaitForBox(elsewhere).text, kInstallQuestion);
  DeclineAndFinish(elsewhere);

  DeclineAndFinish(launcher);
}

}  // namespace
