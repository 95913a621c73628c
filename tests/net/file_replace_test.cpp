#include "platform/file_replace.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_dir.h"

namespace {

using testing_support::ReadFileBytes;
using testing_support::TempDir;

TEST(FileReplace, MoveReplacesExistingTarget) {
  TempDir dir;
  const auto from = dir.Write("new.part", "new bytes");
  const auto to = dir.Write("file.bin", "old");

  std::uint32_t code = 99;
  EXPECT_TRUE(platform::MoveReplacingFile(from, to, code));
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(ReadFileBytes(to), "new bytes");
  EXPECT_FALSE(std::filesystem::exists(from));
}

TEST(FileReplace, FailuresCarryTheOsCode) {
  TempDir dir;
  std::uint32_t code = 0;
  EXPECT_FALSE(platform::MoveReplacingFile(dir.path() / "missing", dir.path() / "target", code));
  EXPECT_NE(code, 0u);
  EXPECT_FALSE(platform::IsFileLockedError(code));

  code = 0;
  EXPECT_FALSE(platform::DeleteReadOnlyFile(dir.path() / "missing", code));
  EXPECT_NE(code, 0u);
}

TEST(FileReplace, DeletesReadOnlyFile) {
  TempDir dir;
  const auto file = dir.Write("locked.cfg", "x");
  std::filesystem::permissions(file, std::filesystem::perms::owner_write | std::filesystem::perms::group_write |
                                         std::filesystem::perms::others_write,
                               std::filesystem::perm_options::remove);

  std::uint32_t code = 99;
  EXPECT_TRUE(platform::DeleteReadOnlyFile(file, code));
  EXPECT_EQ(code, 0u);
  EXPECT_FALSE(std::filesystem::exists(file));
}

}  // namespace
