// See error_box.h.
#include "ui/win/error_box.h"

namespace ui {

void ShowErrorBox(HWND owner, const std::wstring& caption, const std::wstring& text) {
  MessageBoxW(owner, text.c_str(), caption.c_str(), MB_ICONERROR);
}

}  // namespace ui
