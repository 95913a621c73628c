#include <windows.h>

#include <gtest/gtest.h>

#include "app/game_launch.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

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

}  // namespace
