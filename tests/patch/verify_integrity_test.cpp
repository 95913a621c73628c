#include <gtest/gtest.h>

#include <chrono>

#include "patch/patcher_service.h"
#include "platform/path_text.h"
#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

using testing_support::Sha256Of;

class VerifyEntryIntegrity : public testing::Test {
 protected:
  VerifyEntryIntegrity() {
    std::wstring error;
    EXPECT_TRUE(service_.InitializeState(error));
  }

  std::wstring GameFile(const char* name) const { return platform::FromPath(dir_.path() / "game" / name); }

  // Writes the file with a fixed last-write time (whole seconds: mingw's
  // std::filesystem keeps no finer), so rewriting it with the same time
  // changes only the bytes.
  std::wstring WriteGameFile(const char* name, const std::string& bytes) const {
    const auto path = dir_.Write(std::string("game/") + name, bytes);
    fs::last_write_time(path, kFixedTime);
    return platform::FromPath(path);
  }

  static inline const fs::file_time_type kFixedTime =
      std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now());

  testing_support::TempDir dir_;
  LauncherConfig config_;
  patch::CPatcherService service_{config_, {platform::FromPath(dir_.path() / "runtime"), L"",
                                            platform::FromPath(dir_.path() / "game"), L""}};
};

TEST_F(VerifyEntryIntegrity, CacheVouchesForUnchangedFilesRightOrWrong) {
  const patch::SManifestEntry entry{L"a.bin", 5, Sha256Of("hello")};
  std::wstring error;
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"Target file is missing.");
  WriteGameFile("a.bin", "hello!");
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"File size verification failed.");

  WriteGameFile("a.bin", "hello");
  ASSERT_TRUE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;
  EXPECT_TRUE(error.empty());
  // Same size and time: the cache vouches for it, so different bytes go unseen.
  WriteGameFile("a.bin", "jello");
  EXPECT_TRUE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;

  // A new last-write time forces a read; the wrong hash is then cached, so
  // fixing the bytes behind the cache's back keeps the entry failing.
  fs::last_write_time(platform::ToPath(GameFile("a.bin")), kFixedTime + std::chrono::hours(1));
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"SHA-256 verification failed.");
  const auto path = dir_.Write("game/a.bin", "hello");
  fs::last_write_time(path, kFixedTime + std::chrono::hours(1));
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
}

TEST_F(VerifyEntryIntegrity, CacheSurvivesARestartThroughSaveState) {
  WriteGameFile("a.bin", "hello");
  const patch::SManifestEntry entry{L"a.bin", 5, Sha256Of("hello")};
  std::wstring error;
  ASSERT_TRUE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;
  ASSERT_TRUE(service_.SaveState(error)) << error;

  patch::CPatcherService restarted{config_, {platform::FromPath(dir_.path() / "runtime"), L"", L"", L""}};
  ASSERT_TRUE(restarted.InitializeState(error));
  WriteGameFile("a.bin", "jello");
  EXPECT_TRUE(restarted.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;
}

}  // namespace
