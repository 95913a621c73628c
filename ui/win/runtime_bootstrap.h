#pragma once
// Makes sure the WebView2 runtime is installed before the page is created:
// offers to install it when it is missing and reports a failed install. Its
// boxes come in English or Arabic by the user's locale, since the page's
// localised strings are not available yet.

#include "ui/win/win32.h"

#include "app/launcher_config.h"

namespace webview {

// True when the runtime is present at the end. All user interaction happens inside.
bool EnsureRuntime(HWND owner, const LauncherConfig& config);

}  // namespace webview
