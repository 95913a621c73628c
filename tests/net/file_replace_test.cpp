#include "platform/file_replace.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::TempDir;

TEST(FileReplace, MovesOverAndDeletesReadOnlyFiles) {
  TempDir dir;
  const auto from = dir.Write("new.part", "new bytes");
  const auto to = dir.Write("file.bin", "old");

  std::uint32_t code = 99;
  EXPECT_TRUE(platform::MoveReplacingFile(from, to, code));
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(testing_support::ReadFileBytes(to), "new bytes");
  EXPECT_FALSE(fs::exists(from));

  fs::permissions(to, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
  code = 99;
  EXPECT_TRUE(platform::DeleteReadOnlyFile(to, code));
  EXPECT_EQ(code, 0u);
  EXPECT_FALSE(fs::exists(to));

  // Failures carry the system's code.
  EXPECT_FALSE(platform::MoveReplacingFile(dir.path() / "missing", to, code));
  EXPECT_NE(code, 0u);
  EXPECT_FALSE(platform::IsFileLockedError(code));
  code = 0;
  EXPECT_FALSE(platform::DeleteReadOnlyFile(dir.path() / "missing", code));
  EXPECT_NE(code, 0u);
}

}  // namespace
