#pragma once
// The main window's arithmetic, apart from the window system so both builds
// test it: sizes scaled for a display's DPI, centring on a monitor, the
// resize grips around the frameless window and the corner of its rounded
// shape. Rectangles are in screen pixels, right and bottom exclusive.

#include <optional>

#include "app/app_window.h"
#include "app/launcher_config.h"

namespace ui {

struct SRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  bool operator==(const SRect&) const = default;
};

struct SSize {
  int width = 0;
  int height = 0;
  bool operator==(const SSize&) const = default;
};

// The DPI every size in the settings is given for.
inline constexpr int kBaseDpi = 96;

// value * dpi / 96, rounded half away from zero like Windows' MulDiv.
int ScaleForDpi(int value, int dpi);

// The client area the window opens with and the smallest one it may be sized to.
SSize InitialClientSize(const LauncherConfig& config, int dpi);
SSize MinimumClientSize(const LauncherConfig& config, int dpi);

// A window of `size` centred in a monitor's work area (integer halves, as the
// system's own centring does).
SRect CentreInWorkArea(const SRect& workArea, SSize size);

// The grip under `x`, `y` in a window at `window` whose resize band is
// `border` pixels wide inside each edge; none in the middle, where the page
// takes the mouse. Corners win over edges.
std::optional<EWindowGrip> GripAt(const SRect& window, int x, int y, int border);

// Width and height of the ellipse that rounds each corner of the window's region.
int CornerDiameter(int dpi);

}  // namespace ui
