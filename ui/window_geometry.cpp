// The main window's arithmetic; see window_geometry.h.
#include "ui/window_geometry.h"

#include <cstdint>

namespace ui {
namespace {

// The rounded shape's corner at the base DPI.
constexpr int kCornerDiameter = 40;

}  // namespace

int ScaleForDpi(int value, int dpi) {
  const std::int64_t product = static_cast<std::int64_t>(value) * dpi;
  const std::int64_t half = kBaseDpi / 2;
  return static_cast<int>(product >= 0 ? (product + half) / kBaseDpi : (product - half) / kBaseDpi);
}

SSize InitialClientSize(const LauncherConfig& config, int dpi) {
  return {ScaleForDpi(config.windowWidth, dpi), ScaleForDpi(config.windowHeight, dpi)};
}

SSize MinimumClientSize(const LauncherConfig& config, int dpi) {
  return {ScaleForDpi(config.minWindowWidth, dpi), ScaleForDpi(config.minWindowHeight, dpi)};
}

SRect CentreInWorkArea(const SRect& workArea, SSize size) {
  const int x = workArea.left + (workArea.right - size.width - workArea.left) / 2;
  const int y = workArea.top + (workArea.bottom - size.height - workArea.top) / 2;
  return {x, y, x + size.width, y + size.height};
}

std::optional<EWindowGrip> GripAt(const SRect& window, int x, int y, int border) {
  const bool left = x < window.left + border;
  const bool right = x >= window.right - border;
  const bool top = y < window.top + border;
  const bool bottom = y >= window.bottom - border;
  if (top && left) return EWindowGrip::TopLeft;
  if (top && right) return EWindowGrip::TopRight;
  if (bottom && left) return EWindowGrip::BottomLeft;
  if (bottom && right) return EWindowGrip::BottomRight;
  if (left) return EWindowGrip::Left;
  if (right) return EWindowGrip::Right;
  if (top) return EWindowGrip::Top;
  if (bottom) return EWindowGrip::Bottom;
  return std::nullopt;
}

int CornerDiameter(int dpi) { return ScaleForDpi(kCornerDiameter, dpi); }

}  // namespace ui
