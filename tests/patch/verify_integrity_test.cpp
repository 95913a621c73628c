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

  // Writes a.bin with a given last-write time (whole seconds: mingw's
  // std::filesystem keeps no finer), so a rewrite with the same time changes only the bytes.
  void WriteGameFile(const std::string& bytes, fs::file_time_type time = kFixedTime) const {
    fs::last_write_time(dir_.Write("game/a.bin", bytes), time);
  }

  static inline const fs::file_time_type kFixedTime =
      std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now());

  testing_support::TempDir dir_;
  const std::wstring file_ = platform::FromPath(dir_.path() / "game" / "a.bin");
  const patch::SManifestEntry entry_{L"a.bin", 5, Sha256Of("hello")};
  LauncherConfig config_;
  patch::CPatcherService service_{config_, {platform::FromPath(dir_.path() / "runtime"), L"",
                                            platform::FromPath(dir_.path() / "game"), L""}};
};

TEST_F(VerifyEntryIntegrity, CacheVouchesForUnchangedFilesRightOrWrong) {
  std::wstring error;
  EXPECT_FALSE(service_.VerifyEntryIntegrity(file_, entry_, error));
  EXPECT_EQ(error, L"Target file is missing.");
  WriteGameFile("hello!");
  EXPECT_FALSE(service_.VerifyEntryIntegrity(file_, entry_, error));
  EXPECT_EQ(error, L"File size verification failed.");

  WriteGameFile("hello");
  ASSERT_TRUE(service_.VerifyEntryIntegrity(file_, entry_, error)) << error;
  EXPECT_TRUE(error.empty());
  // Same size and time: the cache vouches for it, so different bytes go unseen.
  WriteGameFile("jello");
  EXPECT_TRUE(service_.VerifyEntryIntegrity(file_, entry_, error)) << error;

  // A new last-write time forces a read; the wrong hash is then cached, so
  // fixing the bytes behind the cache's back keeps the entry failing.
  WriteGameFile("jello", kFixedTime + std::chrono::hours(1));
  EXPECT_FALSE(service_.VerifyEntryIntegrity(file_, entry_, error));
  EXPECT_EQ(error, L"SHA-256 verification failed.");
  WriteGameFile("hello", kFixedTime + std::chrono::hours(1));
  EXPECT_FALSE(service_.VerifyEntryIntegrity(file_, entry_, error));
}

TEST_F(VerifyEntryIntegrity, CacheSurvivesARestartThroughSaveState) {
  WriteGameFile("hello");
  std::wstring error;
  ASSERT_TRUE(service_.VerifyEntryIntegrity(file_, entry_, error)) << error;
  ASSERT_TRUE(service_.SaveState(error)) << error;

  patch::CPatcherService restarted{config_, {platform::FromPath(dir_.path() / "runtime"), L"", L"", L""}};
  ASSERT_TRUE(restarted.InitializeState(error));
  WriteGameFile("jello");
  EXPECT_TRUE(restarted.VerifyEntryIntegrity(file_, entry_, error)) << error;
}

}  // namespace
