#include <windows.h>

#include <gtest/gtest.h>

#include "platform/file_replace.h"
#include "tests/support/temp_dir.h"

namespace {

TEST(FileReplace, TargetHeldOpenByAnotherHandleIsReportedLocked) {
  testing_support::TempDir dir;
  const auto from = dir.Write("new.part", "new");
  const auto to = dir.Write("game.exe", "running");
  HANDLE held = CreateFileW(to.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);

  std::uint32_t code = 0;
  const bool moved = platform::MoveReplacingFile(from, to, code);
  CloseHandle(held);

  EXPECT_FALSE(moved);
  EXPECT_TRUE(platform::IsFileLockedError(code)) << code;
  EXPECT_EQ(testing_support::ReadFileBytes(to), "running");
}

}  // namespace
