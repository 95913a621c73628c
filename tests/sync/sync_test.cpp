#include <gtest/gtest.h>

#include <filesystem>

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

  // Same size, other bytes: only hashing could tell.
  void SpoilGameFile(const testing_support::TempDir& game, std::size_t index) const {
    const SGameFile& file = release_.files[index];
    game.Write(file.path, testing_support::PatternBytes(file.bytes.size(), 99));
  }

  SRelease release_;
  std::string list_;
};

// Adoption and the sync after it that hashes nothing are shown end to end by the
// client (tests/e2e); what only shows here is the view and the log line.
TEST_F(SyncTest, AFreshFolderHoldingTheReleaseIsAdoptedAndLogged) {
  testing_support::TempDir logFolder;
  logging::OpenLog(logFolder.wide(), L"", L"");
  WriteGameFiles(release_.files);
  const SPatchView adopted = Sync(*NewService());
  logging::OpenLog(L"", L"", L"");
  EXPECT_EQ(adopted.phase, EPatchPhase::UpToDate);
  EXPECT_EQ(adopted.statusText, L"Up to date");
  EXPECT_TRUE(adopted.actionReady && adopted.folderChecked && !adopted.patchNeeded);
  EXPECT_EQ(adopted.installedBuild, 42u);
  EXPECT_NE(RuntimeFile("launcher.state").find("manifest_fingerprint=" + Sha256Hex(list_) + "\n"), std::string::npos);
  EXPECT_NE(
      testing_support::ReadFileBytes(logFolder.path() / "launcher.log").find("[manifest] verified build 42 (3 files)"),
      std::string::npos);
}

TEST_F(SyncTest, AFolderThatDiffersNeedsAPatchUnlessInMaintenanceAndNothingIsAdopted) {
  enum class EFolder { Current, Missing, Spoiled };
  struct SCase {
    EFolder folder;
    bool maintenance;
    EPatchPhase phase;
    const wchar_t* statusText;
    bool actionReady;
  } const cases[] = {
      {EFolder::Missing, false, EPatchPhase::PatchAvailable, L"Patch available", true},
      {EFolder::Spoiled, false, EPatchPhase::PatchAvailable, L"Patch available", true},
      // Maintenance keeps an up-to-date game playable and offers no patch.
      {EFolder::Current, true, EPatchPhase::Maintenance, L"Maintenance", true},
      {EFolder::Spoiled, true, EPatchPhase::Maintenance, L"Maintenance", false},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.folder) * 2 + c.maintenance);
    testing_support::TempDir runtime;
    testing_support::TempDir game;
    for (const SGameFile& file : release_.files) game.Write(file.path, file.bytes);
    if (c.folder == EFolder::Missing) std::filesystem::remove(game.path() / release_.files[1].path);
    if (c.folder == EFolder::Spoiled) SpoilGameFile(game, 2);
    patch::CPatcherService service(config_, {runtime.wide(), L"", game.wide(), launcherPath_});
    std::wstring error;
    ASSERT_TRUE(service.InitializeState(error));
    const SPatchView status = Sync(service, c.maintenance);
    EXPECT_EQ(status.phase, c.phase);
    EXPECT_EQ(status.statusText, c.statusText);
    EXPECT_EQ(status.actionReady, c.actionReady);
    EXPECT_EQ(status.patchNeeded, !c.maintenance);
    EXPECT_EQ(status.folderChecked, !c.maintenance);
    EXPECT_EQ(status.targetBuild, 42u);
    if (c.folder != EFolder::Current) {
      EXPECT_EQ(service.GetStateSnapshot().installedBuild, 0u);
    }
    // A missing file is decided without hashing anything.
    if (!c.maintenance) {
      EXPECT_EQ(std::filesystem::exists(runtime.path() / "integrity.cache"), c.folder == EFolder::Spoiled);
    }
  }
}

TEST_F(SyncTest, AnUnreachableHostLosesTheConnection) {
  config_.patchHost = L"https://127.0.0.1:1/";
  config_.httpAttempts = 1;
  const SPatchView status = Sync(*NewService(), false, false);
  EXPECT_EQ(status.phase, EPatchPhase::ConnectionLost);
  EXPECT_EQ(status.errorText, L"Could not read the channel pointer.");
  EXPECT_FALSE(status.patchNeeded || status.actionReady);
}

}  // namespace
}  // namespace sync_tests
