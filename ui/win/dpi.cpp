// The DPI functions looked up by name; see dpi.h.
#include "ui/win/dpi.h"

#include "ui/win/system_function.h"

namespace ui {
namespace {

using GetDpiForSystemFunction = UINT(WINAPI*)();
using GetDpiForWindowFunction = UINT(WINAPI*)(HWND);
using AdjustWindowRectExForDpiFunction = BOOL(WINAPI*)(RECT*, DWORD, BOOL, DWORD, UINT);

template <typename TFunction>
TFunction User32Function(const char* name) {
  return SystemFunction<TFunction>(L"user32.dll", name);
}

}  // namespace

int SystemDpi() {
  static const auto getDpiForSystem = User32Function<GetDpiForSystemFunction>("GetDpiForSystem");
  return getDpiForSystem != nullptr ? static_cast<int>(getDpiForSystem()) : kBaseDpi;
}

int WindowDpi(HWND window) {
  static const auto getDpiForWindow = User32Function<GetDpiForWindowFunction>("GetDpiForWindow");
  const UINT dpi = getDpiForWindow != nullptr ? getDpiForWindow(window) : 0;
  return dpi != 0 ? static_cast<int>(dpi) : SystemDpi();
}

SSize WindowSizeForClient(SSize client, DWORD style, DWORD exStyle, int dpi) {
  static const auto adjustForDpi = User32Function<AdjustWindowRectExForDpiFunction>("AdjustWindowRectExForDpi");
  RECT rect{0, 0, client.width, client.height};
  if (adjustForDpi != nullptr) {
    adjustForDpi(&rect, style, FALSE, exStyle, static_cast<UINT>(dpi));
  } else {
    AdjustWindowRectEx(&rect, style, FALSE, exStyle);
  }
  return {rect.right - rect.left, rect.bottom - rect.top};
}

}  // namespace ui
