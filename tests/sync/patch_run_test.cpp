#include <gtest/gtest.h>

#include <filesystem>

#include "patch/patcher_service.h"
#include "tests/sync/sync_test_support.h"

namespace sync_tests {
namespace {

using patch::EPatchTrigger;

class PatchRunTest : public CSyncTest {
 protected:
  void SetUp() override {
    CSyncTest::SetUp();
    release_.files = SampleGameFiles();
  }

  bool Run(bool repair, EPatchTrigger trigger) {
    return service_->RunPatch(http_, repair, trigger, {}, outcome_, error_);
  }

  void ExpectGameFolderHoldsTheRelease() const {
    for (const SGameFile& file : release_.files) {
      EXPECT_EQ(testing_support::ReadFileBytes(game_.path() / file.path), file.bytes) << file.path;
    }
  }

  patch::SPatchView Sync() {
    patch::SPatchView status;
    std::wstring error;
    EXPECT_TRUE(service_->SyncPatchState(http_, false, status, error)) << testing::PrintToString(error);
    return status;
  }

  SRelease release_;
  std::unique_ptr<patch::CPatcherService> service_ = NewService();
  patch::SPatchOutcome outcome_;
  std::wstring error_;
};

TEST_F(PatchRunTest, AnEmptyFolderIsPatchedRecordedAsInstalledAndThenFoundUpToDate) {
  const std::string list = PublishRelease(release_);
  ASSERT_TRUE(Run(false, EPatchTrigger::User)) << testing::PrintToString(error_);
  EXPECT_EQ(outcome_.appliedCount, 3u);
  ExpectGameFolderHoldsTheRelease();

  const patch::SPatchState state = service_->GetStateSnapshot();
  EXPECT_EQ(state.installedBuild, 42u);
  const std::string fingerprint = Sha256Hex(list);
  EXPECT_EQ(state.manifestFingerprint, std::wstring(fingerprint.begin(), fingerprint.end()));
  EXPECT_NE(RuntimeFile("launcher.state").find("installed_build=42\n"), std::string::npos);
  EXPECT_TRUE(RuntimeFileExists("integrity.cache"));

  EXPECT_EQ(Sync().phase, patch::EPatchPhase::UpToDate);
}

TEST_F(PatchRunTest, ACompletedRunListsEveryUnprotectedFileTheListDoesNotName) {
  PublishRelease(release_);
  game_.Write("old/Leftover.dat", "12345");
  game_.Write("patch.tmp1", "ab");
  game_.Write("screenshots/shot1.jpg", "kept");
  ASSERT_TRUE(Run(false, EPatchTrigger::User)) << testing::PrintToString(error_);
  EXPECT_EQ(outcome_.orphanList, (std::vector<std::wstring>{L"old/leftover.dat", L"patch.tmp1"}));
  EXPECT_EQ(outcome_.orphanBytes, 7u);
}

TEST_F(PatchRunTest, AListWithoutUsableFilesIsRefused) {
  release_.files = {{"../outside.dat", "x"}, {"C:/absolute.dat", "y"}};
  PublishRelease(release_);
  EXPECT_FALSE(Run(false, EPatchTrigger::User));
  EXPECT_EQ(error_, L"The update list contains no usable files.");
  EXPECT_EQ(service_->GetStateSnapshot().installedBuild, 0u);
}

TEST_F(PatchRunTest, AFileLeftBehindKeepsTheReleaseUninstalled) {
  PublishRelease(release_);
  RemovePublishedFile(BlobPath(Sha256Hex(release_.files[1].bytes)));
  EXPECT_FALSE(Run(false, EPatchTrigger::User));
  EXPECT_EQ(error_,
            L"1 file could not be updated: data/world.pak (the published update is incomplete). "
            L"The rest of the update was applied.");
  EXPECT_EQ(service_->GetStateSnapshot().installedBuild, 0u);
  EXPECT_TRUE(service_->GetStateSnapshot().manifestFingerprint.empty());
  EXPECT_EQ(Sync().phase, patch::EPatchPhase::PatchAvailable);
}

TEST_F(PatchRunTest, OnlyAUserStartedRunForgetsEarlierBlobFailures) {
  PublishRelease(release_);
  const std::string sha = Sha256Hex(release_.files[1].bytes);
  service_->RecordBlobFailure({sha.begin(), sha.end()}, true);

  EXPECT_FALSE(Run(false, EPatchTrigger::Automatic));
  EXPECT_EQ(outcome_.failedCount, 1u);
  EXPECT_EQ(outcome_.firstFailedReason, L"the published bytes did not match the signed hash");

  ASSERT_TRUE(Run(false, EPatchTrigger::User)) << testing::PrintToString(error_);
  EXPECT_EQ(outcome_.appliedCount, 1u);
  ExpectGameFolderHoldsTheRelease();
}

}  // namespace
}  // namespace sync_tests
