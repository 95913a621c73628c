// What only Windows shows: the two ways of starting the game, and a launcher
// held open by its exiting process.
#include <windows.h>

#include <gtest/gtest.h>

#include "app/game_launch.h"
#include "app/self_update_mode.h"
#include "platform/path_text.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"

namespace {

using testing_support::ReadFileBytes;
using testing_support::TempDir;

TEST(GameLaunchWin, WhenBothWaysFailTheErrorNamesEach) {
  TempDir dir;
  const std::wstring missing = platform::FromPath(dir.path() / "vardeni2.exe");
  std::wstring error;
  EXPECT_FALSE(StartGameProcess(missing, error));
  const std::wstring first = L"Could not start game executable: " + missing + L" | CreateProcess: " +
                             FormatWindowsError(ERROR_FILE_NOT_FOUND) + L" | ShellExecute: ";
  ASSERT_GT(error.size(), first.size());
  EXPECT_EQ(error.substr(0, first.size()), first);
  EXPECT_EQ(error.back(), L')');
}

// The hand-over waits a while for the lock and then gives up, leaving the old launcher in place.
TEST(SelfUpdateModeWin, ATargetLockedLongerThanTheWaitStaysInPlace) {
  TempDir dir;
  const auto target = dir.Write("VardeniLauncher.exe", "old");
  HANDLE held = CreateFileW(target.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  std::wstring error;
  EXPECT_EQ(ApplySelfUpdate(platform::FromPath(launch_test::ProbePath()), platform::FromPath(target),
                            {3, std::chrono::milliseconds(10)}, error),
            1);
  CloseHandle(held);
  EXPECT_EQ(error, L"Could not replace the launcher executable.");
  EXPECT_EQ(ReadFileBytes(target), "old");
}

}  // namespace
