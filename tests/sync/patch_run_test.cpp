#include <gtest/gtest.h>

#include "patch/patcher_service.h"
#include "tests/sync/sync_test_support.h"

namespace sync_tests {
namespace {

using patch::EPatchTrigger;

class PatchRunTest : public CSyncTest {
 protected:
  bool Run(EPatchTrigger trigger) { return service_->RunPatch(http_, false, trigger, {}, outcome_, error_); }

  std::unique_ptr<patch::CPatcherService> service_ = NewService();
  patch::SPatchOutcome outcome_;
  std::wstring error_;
};

TEST_F(PatchRunTest, AReleaseIsRecordedOnlyOnceEveryFileIsInPlaceAndOnlyAUserRunRetriesAMissingBlob) {
  SRelease release;
  release.files = SampleGameFiles();
  const std::string list = PublishRelease(release);
  const std::string missingBlob = BlobPath(Sha256Hex(release.files[1].bytes));
  RemovePublishedFile(missingBlob);
  game_.Write("old/Leftover.dat", "12345");
  game_.Write("patch.tmp1", "ab");
  game_.Write("screenshots/shot1.jpg", "kept");

  EXPECT_FALSE(Run(EPatchTrigger::User));
  EXPECT_EQ(error_,
            L"1 file could not be updated: data/world.pak (the published update is incomplete). "
            L"The rest of the update was applied.");
  EXPECT_EQ(service_->GetStateSnapshot().installedBuild, 0u);
  EXPECT_TRUE(service_->GetStateSnapshot().manifestFingerprint.empty());
  EXPECT_EQ(Sync(*service_).phase, patch::EPatchPhase::PatchAvailable);

  // Published late: an automatic run still holds the failure against it.
  PublishBlob(Sha256Hex(release.files[1].bytes), release.files[1].bytes);
  EXPECT_FALSE(Run(EPatchTrigger::Automatic));
  EXPECT_EQ(outcome_.failedCount, 1u);
  EXPECT_EQ(outcome_.firstFailedReason, L"the published bytes did not match the signed hash");

  ASSERT_TRUE(Run(EPatchTrigger::User)) << testing::PrintToString(error_);
  EXPECT_EQ(outcome_.appliedCount, 1u);
  for (const SGameFile& file : release.files) {
    EXPECT_EQ(testing_support::ReadFileBytes(game_.path() / file.path), file.bytes) << file.path;
  }
  EXPECT_EQ(outcome_.orphanList, (std::vector<std::wstring>{L"old/leftover.dat", L"patch.tmp1"}));
  EXPECT_EQ(outcome_.orphanBytes, 7u);
  const patch::SPatchState state = service_->GetStateSnapshot();
  EXPECT_EQ(state.installedBuild, 42u);
  const std::string fingerprint = Sha256Hex(list);
  EXPECT_EQ(state.manifestFingerprint, std::wstring(fingerprint.begin(), fingerprint.end()));
  EXPECT_NE(RuntimeFile("launcher.state").find("installed_build=42\n"), std::string::npos);
  EXPECT_EQ(Sync(*service_).phase, patch::EPatchPhase::UpToDate);
}

TEST_F(PatchRunTest, AListWithoutUsableFilesIsRefused) {
  SRelease release;
  release.files = {{"../outside.dat", "x"}, {"C:/absolute.dat", "y"}};
  PublishRelease(release);
  EXPECT_FALSE(Run(EPatchTrigger::User));
  EXPECT_EQ(error_, L"The update list contains no usable files.");
  EXPECT_EQ(service_->GetStateSnapshot().installedBuild, 0u);
}

}  // namespace
}  // namespace sync_tests
