#include <gtest/gtest.h>

#include "patch/patcher_service.h"
#include "tests/sync/sync_test_support.h"
#include "text/utf.h"

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

// The files, the orphans and the incomplete-update sentence are shown end to end by
// the client (tests/e2e); the retry rule and the recorded release only show here.
TEST_F(PatchRunTest, AReleaseIsRecordedOnlyOnceEveryFileIsInPlaceAndOnlyAUserRunRetriesAMissingBlob) {
  SRelease release;
  release.files = SampleGameFiles();
  const std::string list = PublishRelease(release);
  const SGameFile& late = release.files[1];
  RemovePublishedFile(BlobPath(Sha256Hex(late.bytes)));

  EXPECT_FALSE(Run(EPatchTrigger::User));
  EXPECT_EQ(error_,
            L"1 file could not be updated: data/world.pak (the published update is incomplete). "
            L"The rest of the update was applied.");
  EXPECT_EQ(service_->GetStateSnapshot().installedBuild, 0u);

  // Published late: an automatic run still holds the failure against it.
  PublishFile(BlobPath(Sha256Hex(late.bytes)), late.bytes);
  EXPECT_FALSE(Run(EPatchTrigger::Automatic));
  EXPECT_EQ(outcome_.failedCount, 1u);
  EXPECT_EQ(outcome_.firstFailedReason, L"the published bytes did not match the signed hash");

  ASSERT_TRUE(Run(EPatchTrigger::User)) << testing::PrintToString(error_);
  EXPECT_EQ(outcome_.appliedCount, 1u);
  EXPECT_EQ(testing_support::ReadFileBytes(game_.path() / late.path), late.bytes);
  const patch::SPatchState state = service_->GetStateSnapshot();
  EXPECT_EQ(state.installedBuild, 42u);
  EXPECT_EQ(text::WideToUtf8(state.manifestFingerprint), Sha256Hex(list));
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
