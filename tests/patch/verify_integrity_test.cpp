#include <gtest/gtest.h>

#include <chrono>

#include "patch/entry_verification.h"
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

TEST_F(VerifyEntryIntegrity, CacheVouchesForUnchangedFilesRightOrWrongAcrossARestart) {
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
  // fixing the bytes behind the cache's back keeps the entry failing, in this
  // run and, once the state is saved, in the next.
  WriteGameFile("jello", kFixedTime + std::chrono::hours(1));
  EXPECT_FALSE(service_.VerifyEntryIntegrity(file_, entry_, error));
  EXPECT_EQ(error, L"SHA-256 verification failed.");
  WriteGameFile("hello", kFixedTime + std::chrono::hours(1));
  EXPECT_FALSE(service_.VerifyEntryIntegrity(file_, entry_, error));
  ASSERT_TRUE(service_.SaveState(error)) << error;
  patch::CPatcherService restarted{config_, {platform::FromPath(dir_.path() / "runtime"), L"", L"", L""}};
  ASSERT_TRUE(restarted.InitializeState(error));
  EXPECT_FALSE(restarted.VerifyEntryIntegrity(file_, entry_, error));
}

// Many files at once, on the thread pool: every verdict as one file alone
// would get it, in list order, the same again from the cache, and a
// verification dropped half-way stops cleanly.
TEST_F(VerifyEntryIntegrity, ABatchGivesEachEntryItsOwnVerdictInOrder) {
  std::vector<patch::SManifestEntry> entries;
  std::vector<std::wstring> paths;
  std::vector<bool> expected;
  for (int i = 0; i < 60; ++i) {
    const std::string name = "game/f" + std::to_string(i);
    const std::string bytes = "content " + std::to_string(i);
    const int kind = i % 4;  // right, missing, wrong size, wrong bytes
    if (kind != 1) dir_.Write(name, kind == 2 ? bytes + "!" : kind == 3 ? "CONTENT " + std::to_string(i) : bytes);
    entries.push_back({L"f" + std::to_wstring(i), bytes.size(), Sha256Of(bytes)});
    paths.push_back(platform::FromPath(dir_.path() / name));
    expected.push_back(kind == 0);
  }
  std::vector<const patch::SManifestEntry*> pointers;
  for (const auto& entry : entries) pointers.push_back(&entry);
  for (int round = 0; round < 2; ++round) {
    patch::CEntryVerification verification(service_, paths, pointers);
    for (std::size_t i = 0; i < entries.size(); ++i) EXPECT_EQ(verification.Passed(i), expected[i]) << i << round;
  }
  patch::CEntryVerification dropped(service_, paths, pointers);
  EXPECT_TRUE(dropped.Passed(0));
}

}  // namespace
