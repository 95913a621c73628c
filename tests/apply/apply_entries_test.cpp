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

TEST_F(ApplyEntries, SharedBlobIsFetchedOnceAndEveryTargetGetsIt) {
  const std::string shared = PatternBytes(300000, 1);
  const std::string other = PatternBytes(70000, 2);
  WriteGameFile("data/a.bin", "old bytes of a");
  const std::vector<patch::SManifestEntry> files = {Publish("data/a.bin", shared), Publish("data/b.bin", other),
                                                    Publish("data/deeper/copy.bin", shared)};

  const SApplyRun run = Apply(files);

  ASSERT_TRUE(run.ok);
  EXPECT_EQ(run.error, L"");
  EXPECT_EQ(run.outcome.appliedCount, 3u);
  EXPECT_EQ(run.outcome.failedCount, 0u);
  EXPECT_TRUE(ReadGameFile("data/a.bin") == shared);
  EXPECT_TRUE(ReadGameFile("data/deeper/copy.bin") == shared);
  EXPECT_TRUE(ReadGameFile("data/b.bin") == other);
  EXPECT_EQ(HttpsLog(BlobUrlPath(files[0].sha256)).size(), 1u);
  // The last target took the staged blob by renaming it; a copy would have left it there.
  EXPECT_FALSE(fs::exists(patch::StagedBlobPath(StagingRoot(), files[0].sha256)));
  for (const auto& entry : fs::recursive_directory_iterator(dir_.path() / "game")) {
    EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
  }
  // Every applied file is already in the integrity cache with its new time.
  for (const auto& entry : files) {
    const std::wstring path = platform::FromPath(GamePath(text::WideToUtf8(entry.path)));
    platform::SFileStamp stamp;
    ASSERT_TRUE(platform::ReadFileStamp(path, stamp));
    std::wstring cached;
    EXPECT_TRUE(service_->LookupCachedHashOnActor(path, stamp.size, stamp.lastWriteTime, cached));
    EXPECT_EQ(cached, entry.sha256);
  }
}

TEST_F(ApplyEntries, ProgressIsReportedInOrderAndOneAtATime) {
  const std::vector<patch::SManifestEntry> files = {
      Publish("a.bin", PatternBytes(200000, 3)), Publish("b.bin", PatternBytes(150000, 4)),
      Publish("c.bin", PatternBytes(100000, 5)), Publish("d.bin", PatternBytes(50000, 6)),
      Publish("e.bin", PatternBytes(250000, 7))};

  const SApplyRun run = Apply(files);

  ASSERT_TRUE(run.ok);
  EXPECT_EQ(run.mostCallbacksAtOnce, 1);
  ASSERT_GE(run.reports.size(), files.size() + files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(run.reports[i].phase, 1u);
    EXPECT_EQ(run.reports[i].status, L"Preparing patch");
    EXPECT_EQ(run.reports[i].file, files[i].path);
    EXPECT_EQ(run.reports[i].filesDone, i);
    EXPECT_EQ(run.reports[i].filesTotal, files.size());
  }
  const std::uint64_t total = 200000 + 150000 + 100000 + 50000 + 250000;
  std::uint64_t lastBytes = 0;
  for (std::size_t i = files.size(); i < run.reports.size(); ++i) {
    const auto& report = run.reports[i];
    EXPECT_TRUE(report.phase == 4 || report.phase == 5) << report.phase;
    EXPECT_EQ(report.status, report.phase == 4 ? L"Downloading" : L"Applying files");
    EXPECT_EQ(report.bytesTotal, total);
    EXPECT_EQ(report.filesTotal, files.size());
    EXPECT_GE(report.bytesDone, lastBytes);
    EXPECT_LE(report.bytesDone, total);
    EXPECT_EQ(report.file, L"");
    lastBytes = report.bytesDone;
  }
  const auto& last = run.reports.back();
  EXPECT_EQ(last.phase, 5u);
  EXPECT_EQ(last.bytesDone, total);
  EXPECT_FLOAT_EQ(last.fraction, 1.0f);
  EXPECT_EQ(last.filesDone, files.size());
  EXPECT_GT(last.speedMbps, 0.0);
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
  EXPECT_EQ(first.outcome.appliedCount, 1u);
  EXPECT_TRUE(first.outcome.newFailure);
  EXPECT_EQ(service_->ConsultBlobFailure(missing.sha256), ERetryVerdict::Refused);

  const SApplyRun second = Apply(files);
  ASSERT_TRUE(second.ok);
  EXPECT_EQ(second.error, L"1 file could not be updated: data/a.bin (the published bytes did not match the signed hash).");
  EXPECT_EQ(second.outcome.appliedCount, 0u);
  EXPECT_FALSE(second.outcome.newFailure);
  EXPECT_FALSE(second.SawPhase(4));
  // A skipped file is no reason to claim the folder is up to date.
  EXPECT_FALSE(second.SawPhase(6));

  PublishBlob(missing.sha256, bytesOfA);
  service_->ForgetBlobFailures();
  const SApplyRun third = Apply(files);
  ASSERT_TRUE(third.ok);
  EXPECT_EQ(third.error, L"");
  EXPECT_EQ(third.outcome.appliedCount, 1u);
  EXPECT_TRUE(ReadGameFile("data/a.bin") == bytesOfA);
}

TEST_F(ApplyEntries, PluralSummaryNamesTheFirstFailedFileInListOrder) {
  const std::string unpublished = PatternBytes(3000, 10);
  const std::vector<patch::SManifestEntry> files = {EntryFor("data/a.bin", unpublished),
                                                    EntryFor("data/b.bin", unpublished),
                                                    Publish("data/c.bin", PatternBytes(3000, 11))};

  const SApplyRun run = Apply(files);

  ASSERT_TRUE(run.ok);
  EXPECT_EQ(run.error,
            L"2 files could not be updated, starting with data/a.bin (the published update is incomplete). "
            L"The rest of the update was applied.");
  EXPECT_EQ(run.outcome.failedCount, 2u);
  EXPECT_EQ(run.outcome.firstFailedPath, L"data/a.bin");
  EXPECT_FALSE(fs::exists(GamePath("data/a.bin")));
}

// Transient failures (a server error, no answer at all) back off: the very
// next run waits instead of asking the host again.
TEST_F(ApplyEntries, TransientFailureMakesTheNextRunWait) {
  struct SCase {
    const char* name;
    std::wstring patchHost;
    std::wstring reason;  // empty: the transport's own text, which differs by system
  };
  const std::string faultName = hostFolder_ + "-unavailable";
  const SCase cases[] = {
      {"server error", servers_.FaultUrl(faultName + "?status=503&blob="), L"HTTP file download failed with status 503."},
      {"no server", L"http://127.0.0.1:1/", L""},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    config_.patchHost = c.patchHost;
    service_ = MakeService();
    const patch::SManifestEntry entry = EntryFor("data/a.bin", PatternBytes(2000, 12));

    const SApplyRun first = Apply({entry});
    ASSERT_TRUE(first.ok);
    EXPECT_EQ(first.outcome.failedCount, 1u);
    EXPECT_TRUE(first.outcome.newFailure);
    EXPECT_NE(first.outcome.firstFailedReason, L"");
    EXPECT_NE(first.outcome.firstFailedReason, L"the published update is incomplete");
    if (!c.reason.empty()) {
      EXPECT_EQ(first.error, L"1 file could not be updated: data/a.bin (" + c.reason + L").");
    }
    EXPECT_EQ(service_->ConsultBlobFailure(entry.sha256), ERetryVerdict::Waiting);

    const SApplyRun second = Apply({entry});
    ASSERT_TRUE(second.ok);
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

  const SApplyRun run = Apply({entry});

  ASSERT_TRUE(run.ok);
  EXPECT_EQ(run.error, L"1 file could not be updated: data/a.bin (the downloaded content did not match its signed hash).");
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
  ASSERT_TRUE(plain.ok);
  EXPECT_EQ(plain.error, L"");
  EXPECT_EQ(plain.outcome.appliedCount, 0u);
  EXPECT_FALSE(plain.SawPhase(4));
  ASSERT_FALSE(plain.reports.empty());
  EXPECT_EQ(plain.reports.back().phase, 6u);
  EXPECT_EQ(plain.reports.back().status, L"Up to date");
  EXPECT_FLOAT_EQ(plain.reports.back().fraction, 1.0f);

  const SApplyRun repair = Apply(files, true);
  ASSERT_TRUE(repair.ok);
  EXPECT_EQ(repair.error, L"");
  EXPECT_EQ(repair.outcome.appliedCount, 2u);
  EXPECT_FALSE(repair.SawPhase(6));
  EXPECT_EQ(HttpsLog(BlobUrlPath(files[0].sha256)).size(), 1u);
  EXPECT_TRUE(ReadGameFile("data/a.bin") == bytes);
}

TEST_F(ApplyEntries, StagedBlobIsReusedOnlyWhenItsHashMatches) {
  const std::string bytes = PatternBytes(8000, 16);
  struct SCase {
    const char* name;
    std::string staged;
    bool published;  // an unpublished blob can only come from the staging folder
  };
  const SCase cases[] = {{"verified staged blob", bytes, false}, {"corrupt staged blob", PatternBytes(8000, 17), true}};
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(dir_.path() / "game");
    const patch::SManifestEntry entry = c.published ? Publish("a.bin", bytes) : EntryFor("a.bin", bytes);
    dir_.Write(fs::relative(patch::StagedBlobPath(StagingRoot(), entry.sha256), dir_.path()).generic_string(),
               c.staged);

    const SApplyRun run = Apply({entry});

    ASSERT_TRUE(run.ok);
    EXPECT_EQ(run.error, L"");
    EXPECT_TRUE(ReadGameFile("a.bin") == bytes);
    EXPECT_EQ(run.reports.back().bytesDone, bytes.size());
  }
}

TEST_F(ApplyEntries, RunningLauncherIsNeverATarget) {
  struct SCase {
    const char* name;
    bool launcherExists;
    fs::path launcherPath;
  };
  // A hard link names the launcher's file by another path: only the file's identity can tell.
  const fs::path hardLink = dir_.path() / "launcher-link.exe";
  const SCase cases[] = {
      {"the same file by another name", true, hardLink},
      {"a path spelled differently, file not there yet", false, GamePath("sub") / ".." / "launcher.exe"},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(dir_.path() / "game");
    if (c.launcherExists) {
      WriteGameFile("launcher.exe", "running launcher");
      fs::create_hard_link(GamePath("launcher.exe"), hardLink);
    }
    auto service = MakeService(c.launcherPath);
    const std::vector<patch::SManifestEntry> files = {Publish("launcher.exe", "newer launcher"),
                                                      Publish("data/a.bin", "game data")};

    const SApplyRun run = Apply(*service, files, true);

    ASSERT_TRUE(run.ok);
    EXPECT_EQ(run.error, L"");
    EXPECT_EQ(run.outcome.appliedCount, 1u);
    EXPECT_EQ(ReadGameFile("data/a.bin"), "game data");
    EXPECT_EQ(ReadGameFile("launcher.exe"), c.launcherExists ? "running launcher" : "");
    EXPECT_EQ(fs::exists(GamePath("launcher.exe")), c.launcherExists);
  }
}

}  // namespace
}  // namespace apply_tests
