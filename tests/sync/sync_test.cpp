#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "log/log.h"
#include "patch/patcher_service.h"
#include "tests/sync/sync_test_support.h"

namespace sync_tests {
namespace {

using patch::EPatchPhase;
using patch::SPatchView;

class SyncTest : public CSyncTest {
 protected:
  void SetUp() override {
    CSyncTest::SetUp();
    release_.files = SampleGameFiles();
    list_ = PublishRelease(release_);
  }

  bool Sync(patch::CPatcherService& service, SPatchView& status, bool maintenance = false) {
    std::wstring error = L"stale";
    const bool synced = service.SyncPatchState(http_, maintenance, status, error);
    EXPECT_EQ(error, synced ? L"" : status.errorText);
    return synced;
  }

  // The integrity cache's records, one line each.
  std::vector<std::string> CacheLines() const {
    std::vector<std::string> lines;
    std::istringstream in(RuntimeFile("integrity.cache"));
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }

  // Same size, other bytes: only hashing could tell.
  void SpoilGameFile(const testing_support::TempDir& game, std::size_t index) const {
    const SGameFile& file = release_.files[index];
    game.Write(file.path, testing_support::PatternBytes(file.bytes.size(), 99));
  }

  SRelease release_;
  std::string list_;
};

void ExpectUpToDate(const SPatchView& status) {
  EXPECT_EQ(status.phase, EPatchPhase::UpToDate);
  EXPECT_EQ(status.statusText, L"Up to date");
  EXPECT_EQ(status.progress, 1.0f);
  EXPECT_TRUE(status.actionReady);
  EXPECT_FALSE(status.patchNeeded);
  EXPECT_TRUE(status.folderChecked);
  EXPECT_FALSE(status.launcherUpdating);
}

void ExpectPatchAvailable(const SPatchView& status) {
  EXPECT_EQ(status.phase, EPatchPhase::PatchAvailable);
  EXPECT_EQ(status.statusText, L"Patch available");
  EXPECT_EQ(status.progress, 0.0f);
  EXPECT_TRUE(status.actionReady);
  EXPECT_TRUE(status.patchNeeded);
  EXPECT_TRUE(status.folderChecked);
}

TEST_F(SyncTest, AFreshFolderHoldingTheReleaseIsAdoptedAfterHashingEachFileOnceAndThenNeverHashedAgain) {
  testing_support::TempDir logFolder;
  logging::OpenLog(logFolder.wide(), L"", L"");
  WriteGameFiles(release_.files);
  {
    auto service = NewService();
    SPatchView status;
    ASSERT_TRUE(Sync(*service, status)) << testing::PrintToString(status.errorText);
    ExpectUpToDate(status);
    EXPECT_EQ(status.installedBuild, 42u);
    EXPECT_EQ(status.targetBuild, 42u);
    EXPECT_EQ(status.fileCount, 3u);
  }
  logging::OpenLog(L"", L"", L"");
  EXPECT_NE(testing_support::ReadFileBytes(logFolder.path() / "launcher.log").find("[manifest] verified build 42 (3 files)"),
            std::string::npos);

  // One record per file, each the file's real digest: every file was hashed, once.
  const std::vector<std::string> records = CacheLines();
  ASSERT_EQ(records.size(), release_.files.size());
  for (const SGameFile& file : release_.files) {
    std::string digest(1, '|');
    digest += Sha256Hex(file.bytes);
    EXPECT_EQ(std::count_if(records.begin(), records.end(),
                            [&](const std::string& line) { return line.ends_with(digest); }),
              1)
        << file.path;
  }
  const std::string state = RuntimeFile("launcher.state");
  EXPECT_NE(state.find("installed_build=42\n"), std::string::npos) << state;
  EXPECT_NE(state.find("seen_version_stable=42\n"), std::string::npos) << state;
  EXPECT_NE(state.find("manifest_fingerprint=" + Sha256Hex(list_) + "\n"), std::string::npos) << state;

  // The next launcher run trusts the recorded release: a spoiled file goes
  // unnoticed and no hash is stored, so the cache file is not written again.
  std::filesystem::remove(runtime_.path() / "integrity.cache");
  SpoilGameFile(game_, 1);
  auto service = NewService();
  SPatchView status;
  ASSERT_TRUE(Sync(*service, status));
  ExpectUpToDate(status);
  EXPECT_FALSE(RuntimeFileExists("integrity.cache"));
}

TEST_F(SyncTest, AMissingFileNeedsAPatchWithoutHashingAnything) {
  WriteGameFiles({release_.files[0], release_.files[2]});
  auto service = NewService();
  SPatchView status;
  ASSERT_TRUE(Sync(*service, status));
  ExpectPatchAvailable(status);
  EXPECT_EQ(status.installedBuild, 0u);
  EXPECT_FALSE(RuntimeFileExists("integrity.cache"));
  EXPECT_FALSE(RuntimeFileExists("launcher.state"));
}

TEST_F(SyncTest, AWrongFileNeedsAPatchAndNothingIsAdopted) {
  WriteGameFiles(release_.files);
  SpoilGameFile(game_, 2);
  auto service = NewService();
  SPatchView status;
  ASSERT_TRUE(Sync(*service, status));
  ExpectPatchAvailable(status);
  EXPECT_EQ(service->GetStateSnapshot().installedBuild, 0u);
  EXPECT_TRUE(service->GetStateSnapshot().manifestFingerprint.empty());
}

TEST_F(SyncTest, MaintenanceKeepsAnUpToDateGamePlayableAndOffersNoPatch) {
  struct SCase {
    bool folderCurrent;
    bool actionReady;
  } const cases[] = {{true, true}, {false, false}};
  for (const SCase& c : cases) {
    testing_support::TempDir runtime;
    testing_support::TempDir game;
    for (const SGameFile& file : release_.files) game.Write(file.path, file.bytes);
    if (!c.folderCurrent) SpoilGameFile(game, 1);
    patch::CPatcherService service(config_, {runtime.wide(), L"", game.wide(), launcherPath_});
    std::wstring error;
    ASSERT_TRUE(service.InitializeState(error));
    SPatchView status;
    ASSERT_TRUE(Sync(service, status, true));
    EXPECT_EQ(status.phase, EPatchPhase::Maintenance) << c.folderCurrent;
    EXPECT_EQ(status.statusText, L"Maintenance");
    EXPECT_EQ(status.actionReady, c.actionReady) << c.folderCurrent;
    EXPECT_FALSE(status.patchNeeded);
    EXPECT_FALSE(status.folderChecked);
    EXPECT_EQ(status.targetBuild, 42u);
  }
}

TEST_F(SyncTest, AnUnreachableHostLosesTheConnection) {
  config_.patchHost = L"https://127.0.0.1:1/";
  config_.httpAttempts = 1;
  auto service = NewService();
  SPatchView status;
  status.patchNeeded = true;  // left from an earlier check
  EXPECT_FALSE(Sync(*service, status));
  EXPECT_EQ(status.phase, EPatchPhase::ConnectionLost);
  EXPECT_EQ(status.errorText, L"Could not read the channel pointer.");
  EXPECT_FALSE(status.patchNeeded);
  EXPECT_FALSE(status.actionReady);
}

}  // namespace
}  // namespace sync_tests
