#pragma once
// The launcher process from its first log line to its exit code: the
// self-update hand-over, or the normal run with its hardening, single
// instance, runtime bootstrap, controller, window and message loop.

#include "ui/win/win32.h"

#include "app/launcher_config.h"

// The process's exit code. `config` is the compiled-in record; tests start
// the same sequence with a record of their own.
int RunLauncher(HINSTANCE instance, const LauncherConfig& config);
