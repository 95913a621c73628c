// The main window's arithmetic: DPI sizes, centring, the resize grips.
#include "ui/window_geometry.h"

#include <gtest/gtest.h>

namespace {

using ui::SRect;
using ui::SSize;

TEST(WindowGeometry, SizesFollowTheDisplaysDpi) {
  const LauncherConfig config;
  struct SCase {
    int dpi;
    SSize initial;
    SSize minimum;
    int corner;
  };
  const SCase cases[] = {
      {96, {1000, 640}, {940, 600}, 40},
      {120, {1250, 800}, {1175, 750}, 50},
      {144, {1500, 960}, {1410, 900}, 60},
      // MulDiv rounds halves away from zero: 940 * 101 / 96 = 988.96, 600 * 101 / 96 = 631.25.
      {101, {1052, 673}, {989, 631}, 42},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.dpi);
    EXPECT_EQ(ui::InitialClientSize(config, c.dpi), c.initial);
    EXPECT_EQ(ui::MinimumClientSize(config, c.dpi), c.minimum);
    EXPECT_EQ(ui::CornerDiameter(c.dpi), c.corner);
  }
}

TEST(WindowGeometry, CentresInTheWorkAreaOfTheCursorsMonitor) {
  struct SCase {
    SRect workArea;
    SSize size;
    SRect expected;
  };
  const SCase cases[] = {
      // Primary monitor with the taskbar below.
      {{0, 0, 1920, 1040}, {1016, 679}, {452, 180, 1468, 859}},
      // A second monitor right of it, at 144 DPI.
      {{1920, 0, 4480, 1400}, {1516, 999}, {2442, 200, 3958, 1199}},
      // A second monitor left of the primary has negative coordinates.
      {{-1920, 0, 0, 1080}, {1000, 640}, {-1460, 220, -460, 860}},
      // A window larger than the work area overhangs it evenly.
      {{0, 0, 800, 600}, {1000, 640}, {-100, -20, 900, 620}},
  };
  for (const SCase& c : cases) {
    EXPECT_EQ(ui::CentreInWorkArea(c.workArea, c.size), c.expected);
  }
}

TEST(WindowGeometry, EdgesAndCornersMapToTheirHitTestCodes) {
  const SRect window{100, 100, 1100, 740};
  const int border = 8;
  struct SCase {
    int x;
    int y;
    std::optional<EWindowGrip> grip;
  };
  // The band is 8 pixels: 107 is in it, 108 is not; 1092 is, 1091 is not.
  const SCase cases[] = {
      {100, 100, EWindowGrip::TopLeft}, {107, 107, EWindowGrip::TopLeft}, {108, 107, EWindowGrip::Top},
      {1099, 100, EWindowGrip::TopRight}, {1092, 107, EWindowGrip::TopRight}, {1091, 100, EWindowGrip::Top},
      {100, 739, EWindowGrip::BottomLeft}, {1099, 739, EWindowGrip::BottomRight}, {107, 400, EWindowGrip::Left},
      {1092, 400, EWindowGrip::Right}, {600, 100, EWindowGrip::Top}, {600, 732, EWindowGrip::Bottom},
      {108, 400, std::nullopt}, {1091, 400, std::nullopt}, {600, 108, std::nullopt}, {600, 731, std::nullopt},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(testing::Message() << c.x << "," << c.y);
    EXPECT_EQ(ui::GripAt(window, c.x, c.y, border), c.grip);
  }
}

}  // namespace
