// ApplyEntries against a real HTTPS host (and the fault server for what nginx
// will not do): what reaches the game folder, what is fetched, and the exact
// texts a run leaves behind.
#include <gtest/gtest.h>

#include "patch/staged_promotion.h"
#include "platform/file_time.h"
#include "platform/path_text.h"
#include "tests/apply/apply_test_support.h"
#include "text/utf.h"

namespace apply_tests {
namespace {

namespace fs = std::filesystem;
using patch::ERetryVerdict;
using testing_support::PatternBytes;

class ApplyEntries : public CApplyTest {};

TEST_F(ApplyEntries, SharedBlobIsFetchedOnceEveryTargetGetsItAndProgressComesInOrder) {
  const std::string shared = PatternBytes(300000, 1);
  WriteGameFile("data/a.bin", "old bytes of a");
  const std::vector<patch::SManifestEntry> files = {Publish("data/a.bin", shared),
                                                    Publish("data/b.bin", PatternBytes(70000, 2)),
                                                    Publish("data/deeper/copy.bin", shared)};

  const SApplyRun run = Apply(files);

  ASSERT_TRUE(run.ok && run.error.empty()) << text::WideToUtf8(run.error);
  EXPECT_EQ(run.outcome.appliedCount, 3u);
  EXPECT_EQ(HttpsLog(BlobUrlPath(files[0].sha256)).size(), 1u);
  // The last target took the staged blob by renaming it; a copy would have left it there.
  EXPECT_FALSE(fs::exists(patch::StagedBlobPath(StagingRoot(), files[0].sha256)));

  EXPECT_EQ(run.mostCallbacksAtOnce, 1);
  ASSERT_GT(run.reports.size(), files.size());
  std::uint64_t lastBytes = 0;
  for (std::size_t i = 0; i < run.reports.size(); ++i) {
    const auto& report = run.reports[i];
    if (i < files.size()) {
      EXPECT_EQ(report.status, L"Preparing patch");
      EXPECT_EQ(report.file, files[i].path);
      EXPECT_EQ(report.filesDone, i);
      continue;
    }
    EXPECT_EQ(report.status, report.phase == 4 ? L"Downloading" : L"Applying files") << report.phase;
    EXPECT_GE(report.bytesDone, lastBytes);
    lastBytes = report.bytesDone;
  }
  const patch::SPatchProgress& last = run.reports.back();
  EXPECT_EQ(last.phase, 5u);
  EXPECT_EQ(last.bytesDone, last.bytesTotal);
  EXPECT_FLOAT_EQ(last.fraction, 1.0f);
  EXPECT_EQ(last.filesDone, files.size());

  // Each target holds its bytes and is already in the integrity cache with its new time.
  for (const auto& entry : files) {
    const std::wstring path = platform::FromPath(GamePath(text::WideToUtf8(entry.path)));
    EXPECT_EQ(Sha256Of(ReadGameFile(text::WideToUtf8(entry.path))), entry.sha256);
    platform::SFileStamp stamp;
    ASSERT_TRUE(platform::ReadFileStamp(path, stamp));
    std::wstring cached;
    EXPECT_TRUE(service_->LookupCachedHashOnActor(path, stamp.size, stamp.lastWriteTime, cached));
    EXPECT_EQ(cached, entry.sha256);
  }
}

TEST_F(ApplyEntries, MissingBlobIsRefusedOnLaterRunsUntilFailuresAreForgotten) {
  const std::string bytesOfA = PatternBytes(4000, 8);
  const patch::SManifestEntry missing = EntryFor("data/a.bin", bytesOfA);
  const std::vector<patch::SManifestEntry> files = {missing, Publish("data/b.bin", PatternBytes(5000, 9))};

  const SApplyRun first = Apply(files);
  ASSERT_TRUE(first.ok);
  EXPECT_EQ(first.error,
            L"1 file could not be updated: data/a.bin (the published update is incomplete). "
            L"The rest of the update was applied.");
  EXPECT_TRUE(first.outcome.newFailure);
  EXPECT_EQ(service_->ConsultBlobFailure(missing.sha256), ERetryVerdict::Refused);

  const SApplyRun second = Apply(files);
  ASSERT_TRUE(second.ok);
  EXPECT_EQ(second.error, L"1 file could not be updated: data/a.bin (the published bytes did not match the signed hash).");
  EXPECT_FALSE(second.outcome.newFailure);
  EXPECT_FALSE(second.SawPhase(4));
  // A skipped file is no reason to claim the folder is up to date.
  EXPECT_FALSE(second.SawPhase(6));

  PublishBlob(missing.sha256, bytesOfA);
  service_->ForgetBlobFailures();
  const SApplyRun third = Apply(files);
  EXPECT_EQ(third.error, L"");
  EXPECT_TRUE(ReadGameFile("data/a.bin") == bytesOfA);
}

// Transient failures (a server error, no answer at all) back off: the very
// next run waits instead of asking the host again.
TEST_F(ApplyEntries, TransientFailureMakesTheNextRunWait) {
  const std::string faultName = hostFolder_ + "-unavailable";
  const std::pair<std::wstring, std::wstring> cases[] = {
      {servers_.FaultUrl(faultName + "?status=503&blob="),
       L"1 file could not be updated: data/a.bin (HTTP file download failed with status 503.)."},
      {L"http://127.0.0.1:1/", L""},  // the transport's own text differs by system
  };
  for (const auto& [patchHost, summary] : cases) {
    SCOPED_TRACE(text::WideToUtf8(patchHost));
    config_.patchHost = patchHost;
    service_ = MakeService();
    const patch::SManifestEntry entry = EntryFor("data/a.bin", PatternBytes(2000, 12));

    const SApplyRun first = Apply({entry});
    EXPECT_TRUE(first.outcome.newFailure);
    EXPECT_NE(first.outcome.firstFailedReason, L"the published update is incomplete");
    if (!summary.empty()) {
      EXPECT_EQ(first.error, summary);
    }
    EXPECT_EQ(service_->ConsultBlobFailure(entry.sha256), ERetryVerdict::Waiting);

    const SApplyRun second = Apply({entry});
    EXPECT_EQ(second.error, L"1 file could not be updated: data/a.bin (waiting before retrying).");
    EXPECT_FALSE(second.outcome.newFailure);
  }
  // Three attempts by the first run, none by the second.
  EXPECT_EQ(FaultLog(faultName).size(), 3u);
}

TEST_F(ApplyEntries, MismatchedBytesNeverReachTheTarget) {
  WriteGameFile("data/a.bin", "old content");
  const patch::SManifestEntry entry = EntryFor("data/a.bin", PatternBytes(6000, 13));
  PublishBlob(entry.sha256, PatternBytes(6000, 14));

  EXPECT_EQ(Apply({entry}).error,
            L"1 file could not be updated: data/a.bin (the downloaded content did not match its signed hash).");
  EXPECT_EQ(ReadGameFile("data/a.bin"), "old content");
  EXPECT_FALSE(fs::exists(patch::StagedBlobPath(StagingRoot(), entry.sha256)));
  EXPECT_EQ(service_->ConsultBlobFailure(entry.sha256), ERetryVerdict::Waiting);
}

TEST_F(ApplyEntries, CorrectFolderIsUpToDateAndRepairFetchesItAnyway) {
  const std::string bytes = PatternBytes(9000, 15);
  WriteGameFile("data/a.bin", bytes);
  WriteGameFile("data/b.bin", "b");
  const std::vector<patch::SManifestEntry> files = {Publish("data/a.bin", bytes), Publish("data/b.bin", "b")};

  const SApplyRun plain = Apply(files);
  EXPECT_EQ(plain.outcome.appliedCount, 0u);
  EXPECT_FALSE(plain.SawPhase(4));
  EXPECT_TRUE(!plain.reports.empty() && plain.reports.back().status == L"Up to date");

  const SApplyRun repair = Apply(files, true);
  EXPECT_EQ(repair.error, L"");
  EXPECT_EQ(repair.outcome.appliedCount, 2u);
  EXPECT_FALSE(repair.SawPhase(6));
  EXPECT_EQ(HttpsLog(BlobUrlPath(files[0].sha256)).size(), 1u);
}

TEST_F(ApplyEntries, StagedBlobIsReusedOnlyWhenItsHashMatches) {
  const std::string bytes = PatternBytes(8000, 16);
  // An unpublished blob can only come from the staging folder.
  const std::pair<std::string, bool> cases[] = {{bytes, false}, {PatternBytes(8000, 17), true}};
  for (const auto& [staged, published] : cases) {
    SCOPED_TRACE(published);
    fs::remove_all(dir_.path() / "game");
    const patch::SManifestEntry entry = published ? Publish("a.bin", bytes) : EntryFor("a.bin", bytes);
    dir_.Write(fs::relative(patch::StagedBlobPath(StagingRoot(), entry.sha256), dir_.path()).generic_string(), staged);

    EXPECT_EQ(Apply({entry}).error, L"");
    EXPECT_TRUE(ReadGameFile("a.bin") == bytes);
  }
}

// Of two entries for one path (in any letter case) only the first is planned;
// an item whose work stops half-way (its staging folder cannot be made) still
// counts every target as not updated, or the release would be recorded.
TEST_F(ApplyEntries, ARepeatedPathIsIgnoredAndAnItemThatStopsFailsEveryTarget) {
  const std::string first = PatternBytes(5000, 21);
  const std::string stopped = PatternBytes(5000, 23);
  const std::vector<patch::SManifestEntry> files = {Publish("data/a.bin", first),
                                                    Publish("DATA/A.bin", PatternBytes(5000, 22)),
                                                    Publish("b.bin", stopped), Publish("c.bin", stopped)};
  const fs::path stagingFolder = patch::StagedBlobPath(StagingRoot(), files[2].sha256).parent_path();
  dir_.Write(fs::relative(stagingFolder, dir_.path()).generic_string(), "a file where a folder belongs");

  const SApplyRun run = Apply(files);
  EXPECT_TRUE(ReadGameFile("data/a.bin") == first);
  EXPECT_TRUE(HttpsLog(BlobUrlPath(files[1].sha256)).empty());
  EXPECT_EQ(run.outcome.appliedCount, 1u);
  EXPECT_EQ(run.outcome.failedCount, 2u);
  EXPECT_TRUE(run.error.starts_with(L"2 files could not be updated, starting with b.bin (")) << text::WideToUtf8(run.error);
}

TEST_F(ApplyEntries, RunningLauncherIsNeverATarget) {
  // A hard link names the launcher's file by another path: only the file's identity can tell.
  const fs::path hardLink = dir_.path() / "launcher-link.exe";
  const std::pair<bool, fs::path> cases[] = {{true, hardLink}, {false, GamePath("sub") / ".." / "launcher.exe"}};
  for (const auto& [launcherExists, launcherPath] : cases) {
    SCOPED_TRACE(launcherPath.string());
    fs::remove_all(dir_.path() / "game");
    if (launcherExists) {
      WriteGameFile("launcher.exe", "running launcher");
      fs::create_hard_link(GamePath("launcher.exe"), hardLink);
    }
    auto service = MakeService(launcherPath);
    const SApplyRun run =
        Apply(*service, {Publish("launcher.exe", "newer launcher"), Publish("data/a.bin", "game data")}, true);

    EXPECT_EQ(run.error, L"");
    EXPECT_EQ(run.outcome.appliedCount, 1u);
    EXPECT_EQ(ReadGameFile("data/a.bin"), "game data");
    EXPECT_EQ(fs::exists(GamePath("launcher.exe")), launcherExists);
    if (launcherExists) {
      EXPECT_EQ(ReadGameFile("launcher.exe"), "running launcher");
    }
  }
}

}  // namespace
}  // namespace apply_tests
