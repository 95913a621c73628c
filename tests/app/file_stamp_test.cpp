#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <limits>

#include "platform/file_time.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono;

// 1970-01-01T00:00:00Z in 100-ns units since 1601-01-01.
constexpr std::int64_t kUnixEpochTicks = 116444736000000000;

TEST(FileTimeTest, ConvertsUnixTimesToWindowsTicks) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  const struct {
    std::int64_t seconds;
    std::int64_t nanoseconds;
    std::int64_t ticks;
  } cases[] = {
      {1577836800, 0, 132223104000000000},          // 2020-01-01T00:00:00Z
      {1577836800, 123456789, 132223104001234567},  // below 100 ns dropped
      {-1, 999999999, kUnixEpochTicks - 1},          // a hair before 1970
      {-11644473600, 0, 0},                          // 1601-01-01
      {-11644473601, 0, -10000000},                  // before 1601
      {kMax, 0, kMax},
      {kMin, 0, kMin},
  };
  for (const auto& c : cases) EXPECT_EQ(platform::FileTimeFromUnixTime(c.seconds, c.nanoseconds), c.ticks) << c.seconds;
}

TEST(FileStampTest, ReadsSizeAndLastWriteTimeOfFilesOnly) {
  const testing_support::TempDir dir;
  const fs::path file = dir.Write("game/data.pak", "twelve bytes");
  const sys_seconds written = sys_days{year{1999} / 12 / 31} + hours{23} + minutes{59} + seconds{59};
  fs::last_write_time(file, file_clock::from_sys(written));
  platform::SFileStamp stamp;
  ASSERT_TRUE(platform::ReadFileStamp(platform::FromPath(file), stamp));
  EXPECT_EQ(stamp.size, 12u);
  EXPECT_EQ(stamp.lastWriteTime, 125911583990000000);

  const fs::path paths[] = {dir.path() / "missing.pak", dir.path(), fs::path()};
  for (const fs::path& path : paths) {
    platform::SFileStamp stamp{7, 9};
    EXPECT_FALSE(platform::ReadFileStamp(platform::FromPath(path), stamp)) << path;
    EXPECT_EQ(stamp.size, 7u);
    EXPECT_EQ(stamp.lastWriteTime, 9);
  }
}

}  // namespace
