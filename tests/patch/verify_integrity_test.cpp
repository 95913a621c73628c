#include <gtest/gtest.h>

#include <chrono>

#include "crypto/sha256.h"
#include "patch/patcher_service.h"
#include "platform/file_time.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

std::wstring Sha256Of(const std::string& bytes) {
  std::wstring digest, error;
  crypto::HashMemorySha256(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), digest, error);
  return digest;
}

class VerifyEntryIntegrity : public testing::Test {
 protected:
  VerifyEntryIntegrity() {
    std::wstring error;
    EXPECT_TRUE(service_.InitializeState(error));
  }

  std::wstring GameFile(const char* name) const { return platform::FromPath(dir_.path() / "game" / name); }

  // Rewrites the file and puts its last-write time back, so only the bytes change.
  void ReplaceBytesKeepingTime(const std::wstring& file, const std::string& bytes) const {
    const auto path = platform::ToPath(file);
    const auto time = fs::last_write_time(path);
    dir_.Write("game/" + path.filename().string(), bytes);
    fs::last_write_time(path, time);
  }

  testing_support::TempDir dir_;
  LauncherConfig config_;
  patch::CPatcherService service_{config_, {platform::FromPath(dir_.path() / "runtime"), L"",
                                            platform::FromPath(dir_.path() / "game"), L""}};
};

TEST_F(VerifyEntryIntegrity, MissingAndWrongSizedFilesFailWithoutHashing) {
  const patch::SManifestEntry entry{L"a.bin", 5, Sha256Of("hello")};
  std::wstring error;
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"Target file is missing.");

  dir_.Write("game/a.bin", "hello!");
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"File size verification failed.");
}

TEST_F(VerifyEntryIntegrity, UnchangedFileIsTrustedFromTheCacheWithoutReading) {
  dir_.Write("game/a.bin", "hello");
  const patch::SManifestEntry entry{L"a.bin", 5, Sha256Of("hello")};
  std::wstring error;
  ASSERT_TRUE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;
  EXPECT_TRUE(error.empty());

  // Same size and time: the cache vouches for it, so different bytes go unseen.
  ReplaceBytesKeepingTime(GameFile("a.bin"), "jello");
  EXPECT_TRUE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;

  // A new last-write time forces the file to be read again.
  fs::last_write_time(platform::ToPath(GameFile("a.bin")),
                      fs::last_write_time(platform::ToPath(GameFile("a.bin"))) + std::chrono::hours(1));
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"SHA-256 verification failed.");
}

TEST_F(VerifyEntryIntegrity, WrongFileStaysWrongFromTheCacheAndPathsFoldCase) {
  dir_.Write("game/a.bin", "jello");
  const patch::SManifestEntry entry{L"a.bin", 5, Sha256Of("hello")};
  std::wstring error;
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"SHA-256 verification failed.");

  // The cached hash is of the wrong bytes; fixing them behind the cache's back
  // is not noticed until the time changes, and the entry keeps failing.
  ReplaceBytesKeepingTime(GameFile("a.bin"), "hello");
  EXPECT_FALSE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error));
  EXPECT_EQ(error, L"SHA-256 verification failed.");

  std::wstring cached;
  std::wstring upper = GameFile("a.bin");
  upper.replace(upper.size() - 5, 5, L"A.BIN");
  platform::SFileStamp stamp;
  ASSERT_TRUE(platform::ReadFileStamp(GameFile("a.bin"), stamp));
  EXPECT_TRUE(service_.LookupCachedHashOnActor(upper, stamp.size, stamp.lastWriteTime, cached));
  EXPECT_EQ(cached, Sha256Of("jello"));
}

TEST_F(VerifyEntryIntegrity, CacheSurvivesARestartThroughSaveState) {
  dir_.Write("game/a.bin", "hello");
  const patch::SManifestEntry entry{L"a.bin", 5, Sha256Of("hello")};
  std::wstring error;
  ASSERT_TRUE(service_.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;
  ASSERT_TRUE(service_.SaveState(error)) << error;

  patch::CPatcherService restarted{config_, {platform::FromPath(dir_.path() / "runtime"), L"", L"", L""}};
  ASSERT_TRUE(restarted.InitializeState(error));
  ReplaceBytesKeepingTime(GameFile("a.bin"), "jello");
  EXPECT_TRUE(restarted.VerifyEntryIntegrity(GameFile("a.bin"), entry, error)) << error;
}

TEST(BlobFailureBookkeeping, ServiceAnswersFromItsTableAndForgets) {
  testing_support::TempDir dir;
  LauncherConfig config;
  patch::CPatcherService service{config, {dir.wide(), L"", L"", L""}};
  std::wstring error;
  ASSERT_TRUE(service.InitializeState(error));
  EXPECT_TRUE(service.RecordBlobFailure(L"k", false));
  EXPECT_FALSE(service.RecordBlobFailure(L"k", false));
  EXPECT_EQ(service.ConsultBlobFailure(L"k"), patch::ERetryVerdict::Waiting);
  service.RecordBlobFailure(L"m", true);
  EXPECT_EQ(service.ConsultBlobFailure(L"m"), patch::ERetryVerdict::Refused);
  service.RecordBlobSuccess(L"k");
  EXPECT_EQ(service.ConsultBlobFailure(L"k"), patch::ERetryVerdict::Allowed);
  service.ForgetBlobFailures();
  EXPECT_EQ(service.ConsultBlobFailure(L"m"), patch::ERetryVerdict::Allowed);
}

}  // namespace
