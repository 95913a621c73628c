#include "patch/patch_state.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

using patch::CPatcherService;
using patch::SPatchState;
using text::EPatcherLanguage;

TEST(PatchState, LinesLoadWithTheFileRules) {
  struct SCase {
    std::vector<std::wstring> lines;
    std::function<void(SPatchState&)> expectedChange;
  };
  const SCase cases[] = {
      {{L"CHANNEL=Beta"}, [](SPatchState& s) { s.channel = L"beta"; }},
      {{L"channel=beta", L"channel=gamma"}, [](SPatchState& s) { s.channel = L"stable"; }},
      {{L"language=AR"}, [](SPatchState& s) { s.language = EPatcherLanguage::Arabic; }},
      {{L"language=ar", L"language=fr"}, [](SPatchState& s) { s.language = EPatcherLanguage::English; }},
      {{L"installed_build=abc"}, [](SPatchState&) {}},
      {{L"installed_build=7", L"installed_build=-1"}, [](SPatchState& s) { s.installedBuild = 7; }},
      {{L"installed_build = 12 "}, [](SPatchState& s) { s.installedBuild = 12; }},
      {{L"\tSeen_Version_Stable=3\r"}, [](SPatchState& s) { s.seenVersionStable = 3; }},
      {{L"seen_version_beta"}, [](SPatchState&) {}},
      {{L"seen_version_beta=18446744073709551616"}, [](SPatchState&) {}},
      {{L"", L"   ", L"=5", L"unknown=1"}, [](SPatchState&) {}},
      {{L"manifest_fingerprint= ab=cd "}, [](SPatchState& s) { s.manifestFingerprint = L"ab=cd"; }},
      {{L"seen_news_signature=n1", L"SEEN_NEWS_SIGNATURE=n2"}, [](SPatchState& s) { s.seenNewsSignature = L"n2"; }},
      {{L"seen_events_signature=\u062d\u062f\u062b", L"seen_patch_notes_signature=p",
        L"attempted_launcher_version=1.0.6"},
       [](SPatchState& s) {
         s.seenEventsSignature = L"\u062d\u062f\u062b";
         s.seenPatchNotesSignature = L"p";
         s.attemptedLauncherVersion = L"1.0.6";
       }},
  };
  for (const SCase& c : cases) {
    SPatchState loaded;
    patch::ApplyPatchStateLines(c.lines, loaded);
    SPatchState expected;
    c.expectedChange(expected);
    EXPECT_EQ(loaded, expected) << testing::PrintToString(c.lines);
  }
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
  full.seenEventsSignature = L"e";
  full.seenPatchNotesSignature = L"p";
  full.attemptedLauncherVersion = L"1.0.6";
  EXPECT_EQ(patch::FormatPatchState(full),
            "installed_build=18446744073709551615\nlanguage=ar\nchannel=beta\nmanifest_fingerprint=ab\n"
            "seen_version_stable=4\nseen_version_beta=5\nseen_news_signature=\xD8\xAE\nseen_events_signature=e\n"
            "seen_patch_notes_signature=p\nattempted_launcher_version=1.0.6\n");
}

class PatcherServiceState : public testing::Test {
 protected:
  PatcherServiceState() { config_.defaultToArabic = false; }

  std::wstring RuntimeFolder() const { return dir_.wide() + L"/runtime-folder"; }
  std::wstring LegacyFolder() const { return dir_.wide() + L"/legacy"; }
  patch::SServiceFolders Folders() const { return {RuntimeFolder(), LegacyFolder()}; }
  std::string RuntimeStateBytes() const {
    return testing_support::ReadFileBytes(platform::ToPath(RuntimeFolder() + L"/launcher.state"));
  }

  LauncherConfig config_;
  testing_support::TempDir dir_;
};

TEST_F(PatcherServiceState, MissingFilesAreAFirstRunWithDefaults) {
  CPatcherService service(config_, Folders());
  std::wstring error = L"stale";
  ASSERT_TRUE(service.InitializeState(error));
  EXPECT_EQ(error, L"");
  SPatchState expected;
  expected.language = service.GetStateSnapshot().language;  // detected from the system: tested elsewhere
  EXPECT_EQ(service.GetStateSnapshot(), expected);
}

TEST_F(PatcherServiceState, SavedStateSurvivesARestart) {
  std::wstring error;
  {
    CPatcherService service(config_, Folders());
    ASSERT_TRUE(service.InitializeState(error));
    service.SetLanguage(EPatcherLanguage::Arabic);
    service.MutateState([](SPatchState& s) {
      s.channel = L"beta";
      s.seenNewsSignature = L"news-1";
    });
    service.RecordSeenVersion(L"beta", 9);
    ASSERT_TRUE(service.SaveState(error)) << testing::PrintToString(error);
    EXPECT_EQ(error, L"");
  }
  EXPECT_EQ(RuntimeStateBytes(),
            "installed_build=0\nlanguage=ar\nchannel=beta\nmanifest_fingerprint=\nseen_version_stable=0\n"
            "seen_version_beta=9\nseen_news_signature=news-1\nseen_events_signature=\n"
            "seen_patch_notes_signature=\nattempted_launcher_version=\n");
  CPatcherService reloaded(config_, Folders());
  ASSERT_TRUE(reloaded.InitializeState(error));
  const SPatchState state = reloaded.GetStateSnapshot();
  EXPECT_EQ(state.language, EPatcherLanguage::Arabic);
  EXPECT_EQ(state.channel, L"beta");
  EXPECT_EQ(state.seenVersionBeta, 9u);
  EXPECT_EQ(state.seenNewsSignature, L"news-1");
}

TEST_F(PatcherServiceState, SeenVersionsOnlyRiseAndPickTheChannelIgnoringCase) {
  CPatcherService service(config_, Folders());
  std::wstring error;
  ASSERT_TRUE(service.InitializeState(error));
  service.RecordSeenVersion(L"beta", 9);
  service.RecordSeenVersion(L"BETA", 5);
  service.RecordSeenVersion(L"stable", 3);
  service.RecordSeenVersion(L"anything", 4);
  service.RecordSeenVersion(L"Stable", 2);
  EXPECT_EQ(service.SeenVersionForChannel(L"Beta"), 9u);
  EXPECT_EQ(service.SeenVersionForChannel(L"stable"), 4u);
  EXPECT_EQ(service.SeenVersionForChannel(L"gamma"), 4u);
  const SPatchState state = service.GetStateSnapshot();
  EXPECT_EQ(state.seenVersionBeta, 9u);
  EXPECT_EQ(state.seenVersionStable, 4u);
}

TEST_F(PatcherServiceState, LegacyFileIsReadWhenTheRuntimeFileIsMissingAndNeverWritten) {
  const std::string legacyBytes = "installed_build=41\nchannel=beta\n";
  const auto legacyFile = dir_.Write("legacy/runtime/launcher.state", legacyBytes);
  CPatcherService service(config_, Folders());
  std::wstring error;
  ASSERT_TRUE(service.InitializeState(error));
  EXPECT_EQ(service.GetStateSnapshot().installedBuild, 41u);
  service.MutateState([](SPatchState& s) { s.installedBuild = 42; });
  ASSERT_TRUE(service.SaveState(error));
  EXPECT_EQ(testing_support::ReadFileBytes(legacyFile), legacyBytes);
  // From now on the runtime file wins over the legacy one.
  CPatcherService restarted(config_, Folders());
  ASSERT_TRUE(restarted.InitializeState(error));
  EXPECT_EQ(restarted.GetStateSnapshot().installedBuild, 42u);
}

TEST_F(PatcherServiceState, SaveIntoAnUnwritablePlaceFailsAndKeepsTheLiveRecord) {
  dir_.Write("blocker", "a file where the runtime folder should be");
  CPatcherService service(config_, {dir_.wide() + L"/blocker/runtime", LegacyFolder()});
  std::wstring error;
  ASSERT_TRUE(service.InitializeState(error));
  service.MutateState([](SPatchState& s) { s.installedBuild = 8; });
  EXPECT_FALSE(service.SaveState(error));
  EXPECT_EQ(error, L"Could not save local patch state.");
  EXPECT_EQ(service.GetStateSnapshot().installedBuild, 8u);
}

TEST_F(PatcherServiceState, MarkInstalledAtRecordsTheReleaseAndSaves) {
  CPatcherService service(config_, Folders());
  std::wstring error;
  ASSERT_TRUE(service.InitializeState(error));
  service.RecordSeenVersion(L"beta", 30);
  patch::SManifest manifest;
  manifest.version = 21;
  manifest.channel = L"beta";
  service.MarkInstalledAt(manifest, L"f00d");
  const SPatchState state = service.GetStateSnapshot();
  EXPECT_EQ(state.installedBuild, 21u);
  EXPECT_EQ(state.manifestFingerprint, L"f00d");
  EXPECT_EQ(state.seenVersionBeta, 30u);
  const std::string saved = RuntimeStateBytes();
  EXPECT_NE(saved.find("installed_build=21\n"), std::string::npos) << saved;
  EXPECT_NE(saved.find("manifest_fingerprint=f00d\n"), std::string::npos) << saved;
}

}  // namespace
