#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <regex>
#include <tuple>

#include "app/page_resources.h"
#include "patch/channel_pointer.h"
#include "patch/patcher_service.h"
#include "tests/sync/sync_test_support.h"
#include "text/utf.h"

namespace sync_tests {
namespace {

class FetchManifestTest : public CSyncTest {
 protected:
  bool Fetch(std::wstring& error) {
    manifest_ = {};
    fingerprint_.clear();
    return service_->FetchManifest(http_, manifest_, &fingerprint_, error);
  }

  std::wstring FetchError() {
    std::wstring error;
    EXPECT_FALSE(Fetch(error));
    EXPECT_EQ(manifest_, patch::SManifest{});
    EXPECT_TRUE(fingerprint_.empty());
    return error;
  }

  void UseChannel(const std::wstring& channel) {
    service_->MutateState([&](patch::SPatchState& state) { state.channel = channel; });
  }

  std::unique_ptr<patch::CPatcherService> service_ = NewService();
  patch::SManifest manifest_;
  std::wstring fingerprint_;
};

TEST(BuildPatchUrl, JoinsTheBaseAndARelativeNameAndCacheBustsOnRequest) {
  struct SCase {
    const wchar_t* base;
    const wchar_t* relative;
    bool cacheBust;
    const wchar_t* pattern;
  } const cases[] = {
      {L"https://host/patch/", L"pointer.txt", false, LR"(https://host/patch/pointer\.txt)"},
      {L"https://host/patch", L"//pointer.txt", false, LR"(https://host/patch/pointer\.txt)"},
      {L"https://host/patch", L"\\pointer.txt", false, LR"(https://host/patch/pointer\.txt)"},
      {L"https://host/", L"blobs\\ab\\abc", false, LR"(https://host/blobs/ab/abc)"},
      {L"https://host/patch", L"pointer.txt", true, LR"(https://host/patch/pointer\.txt\?v=[0-9]+)"},
      {L"https://host/patch?key=1", L"pointer.txt", true, LR"(https://host/patch\?key=1/pointer\.txt&v=[0-9]+)"},
  };
  for (const SCase& c : cases) {
    LauncherConfig config;
    config.patchHost = c.base;
    const std::wstring url = patch::CPatcherService(config, {}).BuildPatchUrl(c.relative, c.cacheBust);
    EXPECT_TRUE(std::regex_match(url, std::wregex(c.pattern))) << testing::PrintToString(url);
  }
}

TEST_F(FetchManifestTest, RefusalsNameTheirCause) {
  struct SCase {
    std::function<void()> publish;
    const wchar_t* error;
  } const cases[] = {
      {[&] { PublishFile("pointer.txt", "17\n18\n"); }, L"The channel pointer is not a version number."},
      // The largest pointer is a version: its list is looked for.
      {[&] { PublishFile("pointer.txt", "18446744073709551615"); }, L"The update list is not available yet."},
      {[&] {
         PublishRelease(SRelease{});
         RemovePublishedFile("patchlist.v42.sig");
       },
       L"The update list is not available yet."},
      // Read up to its cap, blanks and all; one byte more is not read.
      {[&] { PublishFile("pointer.txt", std::string(patch::kMaxChannelPointerBytes - 1, ' ') + "7"); },
       L"The update list is not available yet."},
      {[&] { PublishFile("pointer.txt", std::string(patch::kMaxChannelPointerBytes, ' ') + "7"); },
       L"Could not read the channel pointer."},
      {[&] {
         SRelease release;
         release.channel = "beta";  // the install follows stable
         PublishRelease(release);
       },
       L"The update list belongs to a different release channel."},
  };
  for (const SCase& c : cases) {
    c.publish();
    EXPECT_EQ(FetchError(), c.error);
  }
  EXPECT_EQ(HostRequests("patchlist.v18446744073709551615.json").size(), 1u);
}

// Only the pointer is cache-busted; the list and its signature are not.
TEST_F(FetchManifestTest, APointerSelectsItsListOnlyExactlyBetaReadsTheBetaPointerAndAnyBetaKeepsTheBetaFloor) {
  SRelease beta;
  beta.version = 9;
  beta.channel = "beta";
  const std::string list = Sha256Hex(PublishRelease(beta, "pointer-beta.txt"));
  std::wstring error;
  UseChannel(L"beta");
  ASSERT_TRUE(Fetch(error)) << testing::PrintToString(error);
  EXPECT_EQ(manifest_.version, 9u);
  EXPECT_EQ(text::WideToUtf8(fingerprint_), list);
  const std::vector<std::string> pointer = HostRequests("pointer-beta.txt");
  ASSERT_EQ(pointer.size(), 1u);
  EXPECT_TRUE(std::regex_search(pointer[0], std::regex(R"(/pointer-beta\.txt\?v=[0-9]+ \|)"))) << pointer[0];
  for (const char* name : {"patchlist.v9.json", "patchlist.v9.sig"}) {
    const std::vector<std::string> lines = HostRequests(name);
    ASSERT_EQ(lines.size(), 1u) << name;
    EXPECT_NE(lines[0].find("/" + hostFolder_ + "/" + name + " |"), std::string::npos) << lines[0];
  }

  SRelease stable;
  stable.version = 5;
  PublishRelease(stable);
  UseChannel(L"");
  ASSERT_TRUE(Fetch(error)) << testing::PrintToString(error);
  EXPECT_EQ(manifest_.channel, L"stable");

  // "BETA" follows the stable pointer, yet is held to the beta floor.
  UseChannel(L"BETA");
  service_->RecordSeenVersion(L"beta", 9);
  stable.channel = "BETA";
  PublishRelease(stable);
  EXPECT_EQ(FetchError(), L"The host offered an older update than one already applied here.");
  EXPECT_EQ(HostRequests("pointer-beta.txt").size(), 1u);
  service_->MutateState([](patch::SPatchState& state) { state.seenVersionBeta = 5; });
  EXPECT_TRUE(Fetch(error)) << testing::PrintToString(error);
}

// The fault server as the host, one file after another endless ("<file>.fault"): each read
// stops at its cap, long before the body's end, and fails as it fails, leaving no partial file.
TEST_F(FetchManifestTest, AnEndlessBodyEndsEachKindOfReadWithItsOwnFailure) {
  config_.patchHost = servers_.FaultUrl(hostFolder_);
  const SRelease release{.files = SampleGameFiles(), .launcherVersion = "1.0.6", .launcherBytes = "new",
                         .launcherSha256 = ""};
  PublishRelease(release);
  PublishFile("ui.json", "{}");
  text::SLauncherUiDocument document;
  patch::SPatchOutcome outcome;
  std::wstring error;
  const std::tuple<std::string, std::function<std::wstring()>, std::wstring> cases[] = {
      {"pointer.txt", [&] { return FetchError(); }, L"Could not read the channel pointer."},
      {"patchlist.v42.json", [&] { return FetchError(); }, L"The update list is too large to be genuine."},
      {"patchlist.v42.sig", [&] { return FetchError(); }, L"The update list is not available yet."},
      {"ui.json", [&] { return FetchUiDocument(http_, *service_, document) ? L"read" : L"kept"; }, L"kept"},
      {BlobPath(Sha256Hex(release.files[1].bytes)),
       [&] { return service_->RunPatch(http_, false, patch::EPatchTrigger::User, {}, outcome, error) ? L"" : error; },
       L"1 file could not be updated: data/world.pak (the downloaded content did not match its signed hash). "
       L"The rest of the update was applied."},
      {BlobPath(Sha256Hex("new")),
       [&] { return Fetch(error) && !service_->StageAndLaunchUpdate(http_, manifest_, error) ? error : L""; },
       L"The downloaded launcher did not match its signed hash."},
  };
  for (const auto& [file, read, text] : cases) {
    PublishFile(file + ".fault", "endless=1");
    EXPECT_EQ(read(), text) << file;
    RemovePublishedFile(file + ".fault");
    const auto log = http_.Get(servers_.FaultUrl("__log/" + hostFolder_ + "/" + file), 4096);
    EXPECT_EQ(std::string(log.body.begin(), log.body.end()).find("WHOLE"), std::string::npos) << file;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(runtime_.path())) {
      EXPECT_NE(entry.path().extension(), ".part") << file;
    }
  }
}

}  // namespace
}  // namespace sync_tests
