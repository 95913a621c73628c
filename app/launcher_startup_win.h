#pragma once
// The Windows launcher's process: the shared start-up sequence with the
// Windows pieces (DLL search hardening, DPI awareness, COM, the named
// single-instance mutex, the web runtime bootstrap, the main window and its
// message loop) and the shutdown in its order.

#include "ui/win/win32.h"

#include "app/launcher_config.h"

// The process's exit code. `config` is the compiled-in record; tests start
// the same sequence with a record of their own.
int RunWindowsLauncher(HINSTANCE instance, const LauncherConfig& config);
