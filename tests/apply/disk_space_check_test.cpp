#include <gtest/gtest.h>

#include <limits>

#include "patch/disk_space_check.h"
#include "platform/disk_space.h"
#include "tests/support/temp_dir.h"

namespace {

using patch::kDiskSpaceMarginBytes;
using patch::SDiskSpaceNeed;
using patch::STargetSizes;
using patch::SVolumeSpace;

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

TEST(DiskSpaceNeed, GrowthPlusOnePromotionAndTheBlobsInFlight) {
  struct SCase {
    const char* name;
    std::vector<STargetSizes> targets;
    std::uint64_t gameBytes;
    std::uint64_t stagingBytes;
  };
  const SCase cases[] = {
      {"nothing", {}, 0, 0},
      {"one new file", {{100, 0}}, 200, 100},
      {"a shrinking file still needs its temporary", {{50, 80}}, 50, 50},
      // Growth 10+60+20+50+40+30 = 210 plus the largest 60; the four largest are in flight.
      {"six files", {{10, 0}, {60, 0}, {20, 0}, {50, 0}, {40, 0}, {30, 0}}, 270, 180},
      {"growth counts only the increase", {{100, 90}, {30, 40}}, 110, 130},
      {"absurd sizes saturate", {{kMax, 0}, {kMax, 0}}, kMax, kMax},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    const SDiskSpaceNeed need = patch::ComputeDiskSpaceNeed(c.targets);
    EXPECT_EQ(need.gameBytes, c.gameBytes);
    EXPECT_EQ(need.stagingBytes, c.stagingBytes);
  }
}

TEST(DiskSpaceSuffices, OneVolumeHoldsBothNeedsSeparateVolumesEachTheirOwn) {
  const SDiskSpaceNeed need{1000, 400};
  const std::uint64_t both = 1400 + kDiskSpaceMarginBytes;
  struct SCase {
    const char* name;
    SVolumeSpace game;
    SVolumeSpace staging;
    bool enough;
  };
  const SCase cases[] = {
      {"same volume, exactly enough", {true, both, L"C:\\"}, {true, both, L"C:\\"}, true},
      {"same volume, one byte short", {true, both - 1, L"C:\\"}, {true, both, L"C:\\"}, false},
      {"volume names differ only in case", {true, both - 1, L"C:\\"}, {true, kMax, L"c:\\"}, false},
      {"volume unknown: the game folder holds everything", {true, both - 1, L""}, {true, kMax, L"D:\\"}, false},
      {"separate volumes, each exactly enough",
       {true, 1000 + kDiskSpaceMarginBytes, L"C:\\"}, {true, 400 + kDiskSpaceMarginBytes, L"D:\\"}, true},
      {"separate volumes, game one byte short",
       {true, 999 + kDiskSpaceMarginBytes, L"C:\\"}, {true, kMax, L"D:\\"}, false},
      {"separate volumes, staging one byte short",
       {true, kMax, L"C:\\"}, {true, 399 + kDiskSpaceMarginBytes, L"D:\\"}, false},
      {"game free space unknown", {false, 0, L"C:\\"}, {true, 0, L"D:\\"}, true},
      {"staging free space unknown", {true, 0, L"C:\\"}, {false, 0, L"C:\\"}, true},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(patch::DiskSpaceSuffices(need, c.game, c.staging), c.enough);
  }
}

// An unknown free space lets the run go on, so the queries must work on both systems.
TEST(DiskSpaceQueries, FoldersOfOneVolumeShareItsName) {
  const testing_support::TempDir dir;
  std::filesystem::create_directories(dir.path() / "a" / "b");
  std::uint64_t freeBytes = 0;
  EXPECT_TRUE(platform::QueryFreeDiskSpace(dir.path(), freeBytes) && freeBytes > 0);
  EXPECT_FALSE(platform::QueryFreeDiskSpace(dir.path() / "missing", freeBytes));
  std::wstring outer;
  std::wstring inner;
  ASSERT_TRUE(platform::QueryVolumeName(dir.path(), outer) && platform::QueryVolumeName(dir.path() / "a" / "b", inner));
  EXPECT_FALSE(outer.empty());
  EXPECT_EQ(outer, inner);
}

}  // namespace
