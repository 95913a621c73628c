#pragma once
// The per-monitor DPI functions of Windows 10, looked up by name so that the
// launcher still starts on systems without them (which then count as 96 DPI
// and use the DPI-unaware frame arithmetic).

#include "ui/win/win32.h"

#include "ui/window_geometry.h"

namespace ui {

// GetDpiForSystem, else 96.
int SystemDpi();
// GetDpiForWindow, else SystemDpi().
int WindowDpi(HWND window);
// The window rectangle whose client area is `client` for these styles at
// `dpi` (AdjustWindowRectExForDpi, else AdjustWindowRectEx).
SSize WindowSizeForClient(SSize client, DWORD style, DWORD exStyle, int dpi);

}  // namespace ui
