// A file held open without delete sharing is what an exiting launcher looks
// like to the replacement step on Windows.
#include <windows.h>

#include <gtest/gtest.h>

#include <thread>

#include "patch/staged_promotion.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFileBytes;
using testing_support::TempDir;

HANDLE HoldWithoutDeleteSharing(const fs::path& path) {
  return CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                     nullptr);
}

TEST(StagedPromotionWin, LockedTargetTimesOutThenIsReplacedOnceReleased) {
  TempDir dir;
  const fs::path source = dir.Write("launcher_update/launcher.exe", "new");
  const fs::path target = dir.Write("launcher.exe", "old");
  HANDLE held = HoldWithoutDeleteSharing(target);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);

  std::wstring error;
  EXPECT_FALSE(patch::ReplaceLockedFile(source, target, error, {3, std::chrono::milliseconds(10)}));
  EXPECT_EQ(error, L"timed out waiting for " + target.wstring() + L" to unlock");
  EXPECT_FALSE(fs::exists(dir.path() / "launcher.exe.promote.tmp"));
  EXPECT_EQ(ReadFileBytes(target), "old");

  std::thread release([held] {
    Sleep(200);
    CloseHandle(held);
  });
  const bool replaced = patch::ReplaceLockedFile(source, target, error, {1000, std::chrono::milliseconds(10)});
  release.join();
  ASSERT_TRUE(replaced) << error;
  EXPECT_EQ(ReadFileBytes(target), "new");
}

}  // namespace
