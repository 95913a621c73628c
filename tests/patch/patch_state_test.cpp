#include "patch/patch_state.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"
#include "tests/support/temp_dir.h"

namespace {

using patch::CPatcherService;
using patch::SPatchState;
using text::EPatcherLanguage;

TEST(PatchState, LinesLoadWithTheFileRules) {
  SPatchState loaded;
  patch::ApplyPatchStateLines({L"CHANNEL=Beta", L"language=AR", L"installed_build = 12 ", L"\tSeen_Version_Stable=3\r",
                               L"seen_version_beta=18446744073709551616", L"", L"   ", L"=5", L"unknown=1",
                               L"manifest_fingerprint= ab=cd ", L"seen_events_signature=\u062d\u062f\u062b"},
                              loaded);
  SPatchState expected;
  expected.channel = L"beta";
  expected.language = EPatcherLanguage::Arabic;
  expected.installedBuild = 12;
  expected.seenVersionStable = 3;
  expected.manifestFingerprint = L"ab=cd";
  expected.seenEventsSignature = L"\u062d\u062f\u062b";
  EXPECT_EQ(loaded, expected);

  // The last valid line wins; an unknown channel or language falls back.
  patch::ApplyPatchStateLines({L"channel=beta", L"channel=gamma", L"language=ar", L"language=fr",
                               L"installed_build=7", L"installed_build=-1", L"seen_news_signature=n1",
                               L"SEEN_NEWS_SIGNATURE=n2"},
                              loaded = {});
  expected = {};
  expected.installedBuild = 7;
  expected.seenNewsSignature = L"n2";
  EXPECT_EQ(loaded, expected);
}

TEST(PatchState, FormatWritesEveryFieldInOrderAsUtf8) {
  SPatchState full;
  full.installedBuild = 18446744073709551615u;
  full.language = EPatcherLanguage::Arabic;
  full.channel = L"beta";
  full.manifestFingerprint = L"ab";
  full.seenVersionStable = 4;
  full.seenVersionBeta = 5;
  full.seenNewsSignature = L"\u062e";
  // A line break from the network must not smuggle in a line of its own.
  full.seenEventsSignature = L"e\r\nseen_version_stable=0";
  full.seenPatchNotesSignature = L"p";
  full.attemptedLauncherVersion = L"1.0.6";
  EXPECT_EQ(patch::FormatPatchState(full),
            "installed_build=18446744073709551615\nlanguage=ar\nchannel=beta\nmanifest_fingerprint=ab\n"
            "seen_version_stable=4\nseen_version_beta=5\nseen_news_signature=\xD8\xAE\n"
            "seen_events_signature=eseen_version_stable=0\nseen_patch_notes_signature=p\n"
            "attempted_launcher_version=1.0.6\n");
}

class PatcherServiceState : public testing::Test {
 protected:
  PatcherServiceState() { config_.defaultToArabic = false; }

  // A started service over `runtime` below the test folder, with the shared legacy folder.
  std::unique_ptr<CPatcherService> Start(const std::wstring& runtime = L"runtime") {
    auto service = std::make_unique<CPatcherService>(
        config_, patch::SServiceFolders{dir_.wide() + L"/" + runtime, dir_.wide() + L"/legacy", L"", L""});
    std::wstring error = L"stale";
    EXPECT_TRUE(service->InitializeState(error));
    EXPECT_EQ(error, L"");
    return service;
  }

  LauncherConfig config_;
  testing_support::TempDir dir_;
};

TEST_F(PatcherServiceState, SavedStateSurvivesARestartAndSeenVersionsOnlyRise) {
  const auto service = Start();
  service->SetLanguage(EPatcherLanguage::Arabic);
  service->MutateState([](SPatchState& s) {
    s.channel = L"beta";
    s.seenNewsSignature = L"news-\u062e";
  });
  service->RecordSeenVersion(L"beta", 9);
  service->RecordSeenVersion(L"BETA", 5);
  service->RecordSeenVersion(L"Stable", 3);
  service->RecordSeenVersion(L"anything", 4);
  EXPECT_EQ(service->SeenVersionForChannel(L"Beta"), 9u);
  EXPECT_EQ(service->SeenVersionForChannel(L"stable"), 4u);
  EXPECT_EQ(service->SeenVersionForChannel(L"gamma"), 4u);
  std::wstring error;
  ASSERT_TRUE(service->SaveState(error)) << testing::PrintToString(error);
  EXPECT_EQ(Start()->GetStateSnapshot(), service->GetStateSnapshot());

  // Without any file the record starts from the defaults (language aside: detected from the system).
  const auto fresh = Start(L"empty");
  SPatchState expected;
  expected.language = fresh->GetStateSnapshot().language;
  EXPECT_EQ(fresh->GetStateSnapshot(), expected);
}

TEST_F(PatcherServiceState, LegacyFileIsReadWhenTheRuntimeFileIsMissingAndNeverWritten) {
  const std::string legacyBytes = "installed_build=41\nchannel=beta\n";
  const auto legacyFile = dir_.Write("legacy/runtime/launcher.state", legacyBytes);
  const auto service = Start();
  EXPECT_EQ(service->GetStateSnapshot().installedBuild, 41u);
  service->MutateState([](SPatchState& s) { s.installedBuild = 42; });
  std::wstring error;
  ASSERT_TRUE(service->SaveState(error));
  EXPECT_EQ(testing_support::ReadFileBytes(legacyFile), legacyBytes);
  // From now on the runtime file wins over the legacy one.
  EXPECT_EQ(Start()->GetStateSnapshot().installedBuild, 42u);
}

TEST_F(PatcherServiceState, SaveIntoAnUnwritablePlaceFailsAndKeepsTheLiveRecord) {
  dir_.Write("blocker", "a file where the runtime folder should be");
  const auto service = Start(L"blocker/runtime");
  service->MutateState([](SPatchState& s) { s.installedBuild = 8; });
  std::wstring error;
  EXPECT_FALSE(service->SaveState(error));
  EXPECT_EQ(error, L"Could not save local patch state.");
  EXPECT_EQ(service->GetStateSnapshot().installedBuild, 8u);
}

}  // namespace
