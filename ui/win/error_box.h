#pragma once
// The launcher's one kind of error message box: titled with the display name,
// error icon, OK only. Start-up shows it without an owner, the main window
// over itself.

#include "ui/win/win32.h"

#include <string>

namespace ui {

void ShowErrorBox(HWND owner, const std::wstring& caption, const std::wstring& text);

}  // namespace ui
