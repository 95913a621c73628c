#include "patch/install_id.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <thread>

#include "app/paths.h"
#include "patch/legacy_migration.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFileBytes;
using testing_support::TempDir;

constexpr char kStoredId[] = "0123456789abcdef0123456789abcdef";

TEST(InstallId, AWellFormedStoredIdIsKeptAndAnyOtherOrNoneReplacedByANewOne) {
  const std::string id = kStoredId;
  const std::pair<std::optional<std::string>, bool> cases[] = {
      {id, true},
      {id + "\r\n", true},
      {" \t" + id + "\n\n", true},
      {std::nullopt, false},
      {id.substr(1), false},
      {id + "0", false},
      {"0123456789abcdef0123456789abcdeg", false},
      {"0123456789ABCDEF0123456789ABCDEF", false},
      {"0123456789abcdef 0123456789abcdef", false},
      {"", false},
  };
  std::set<std::wstring> created;
  for (const auto& [stored, keep] : cases) {
    TempDir dir;
    if (stored) dir.Write("install.id", *stored);
    std::wstring read;
    std::wstring again;
    std::wstring error;
    ASSERT_TRUE(patch::EnsureInstallId(dir.wide(), read, error)) << stored.value_or("(none)");
    EXPECT_TRUE(IsInstallIdentity(read)) << stored.value_or("(none)");
    EXPECT_EQ(ReadFileBytes(dir.path() / "install.id"), keep ? *stored : text::WideToUtf8(read));
    EXPECT_EQ(read == text::Utf8ToWide(id), keep) << stored.value_or("(none)");
    ASSERT_TRUE(patch::EnsureInstallId(dir.wide(), again, error));
    EXPECT_EQ(again, read) << "stable once written";
    if (!keep) created.insert(read);
  }
  EXPECT_EQ(created.size(), 7u) << "each new id is a fresh one";
}

TEST(InstallId, LaunchersStartedTogetherOnAFreshFolderAgreeOnOneId) {
  for (int round = 0; round < 50; ++round) {
    TempDir dir;
    std::wstring ids[2];
    {
      std::jthread other([&] {
        std::wstring error;
        patch::EnsureInstallId(dir.wide(), ids[1], error);
      });
      std::wstring error;
      patch::EnsureInstallId(dir.wide(), ids[0], error);
    }
    ASSERT_TRUE(IsInstallIdentity(ids[0])) << round;
    ASSERT_EQ(ids[0], ids[1]) << round;
    EXPECT_EQ(ReadFileBytes(dir.path() / "install.id"), text::WideToUtf8(ids[0]));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 1) << "no temporary left";
  }
}

TEST(InstallId, FailuresNameThePath) {
  TempDir dir;
  std::wstring id;
  std::wstring error;
  const std::wstring missing = platform::FromPath(dir.path() / "missing");
  EXPECT_FALSE(patch::EnsureInstallId(missing, id, error));
  EXPECT_EQ(error, L"game directory does not exist: " + missing);

  fs::create_directories(dir.path() / "install.id");
  EXPECT_FALSE(patch::EnsureInstallId(dir.wide(), id, error));
  EXPECT_EQ(error, L"failed to write " + platform::FromPath(dir.path() / "install.id"));
  EXPECT_TRUE(id.empty());
}

TEST(LegacyMigration, CopiesTheLegacyFilesWithoutReplacingAny) {
  TempDir dir;
  const fs::path legacy = dir.path() / "legacy";
  const fs::path runtime = dir.path() / "runtime";
  EXPECT_TRUE(patch::MigrateLegacyFiles(platform::FromPath(legacy), platform::FromPath(runtime)));
  EXPECT_FALSE(fs::exists(runtime)) << "nothing to carry over, nothing created";

  dir.Write("legacy/launcher.state", "old state");
  dir.Write("legacy/integrity.cache", "old cache");
  dir.Write("legacy/webview/profile", "not copied: below a folder");
  dir.Write("runtime/launcher.state", "current state");
  EXPECT_TRUE(patch::MigrateLegacyFiles(platform::FromPath(legacy), platform::FromPath(runtime)));
  EXPECT_EQ(ReadFileBytes(runtime / "launcher.state"), "current state");
  EXPECT_EQ(ReadFileBytes(runtime / "integrity.cache"), "old cache");
  EXPECT_FALSE(fs::exists(runtime / "webview"));
}

}  // namespace
