#pragma once
// The launcher's start-up, in its fixed order, shared by both systems: the
// log and its start line, the self-update hand-over, the refusal of a build
// whose patch host is not https, the install identity and per-install data
// folder, the single-instance lock, then the window. What only one system has
// (DLL hardening, DPI and COM, the web runtime bootstrap) and everything that
// touches the window system comes from the shell.

#include <functional>
#include <string>
#include <vector>

#include "app/launcher_config.h"

inline constexpr wchar_t kMisconfiguredHostText[] =
    L"This build is misconfigured: the patch host is not an https:// URL.\n"
    L"The launcher will not fetch updates over an unauthenticated channel.";
inline constexpr wchar_t kNotStartedText[] = L"The launcher could not be started.";

struct SLauncherShell {
  // An error box titled with the display name, owned by no window.
  std::function<void(const std::wstring& text)> showError;
  // Process-wide preparation before any state is touched; false ends the run
  // quietly with exit code 0. May be empty.
  std::function<bool()> prepareProcess;
  // Takes the per-installation lock ("" when there is no install identity).
  // False when another launcher of this installation holds it; that one has
  // then been brought forward.
  std::function<bool(const std::wstring& identity)> takeSingleInstance;
  // Runs after the lock and before the window. May be empty.
  std::function<void()> beforeWindow;
  // Creates the controller and the window and runs until the window is gone.
  // False with a reason (possibly empty) when the window could not be made.
  std::function<bool(int& exitCode, std::wstring& errorText)> runWindow;
};

// `arguments` includes the program itself; `config` is the compiled-in record
// (tests start the same sequence with one of their own). Returns the process
// exit code.
int RunLauncher(const std::vector<std::wstring>& arguments, const LauncherConfig& config, const SLauncherShell& shell);
