#include <gtest/gtest.h>

#include <regex>

#include "patch/patcher_service.h"
#include "tests/sync/sync_test_support.h"

namespace sync_tests {
namespace {

class FetchManifestTest : public CSyncTest {
 protected:
  bool Fetch(patch::SManifest& manifest, std::wstring& fingerprint, std::wstring& error) {
    return service_->FetchManifest(http_, manifest, &fingerprint, error);
  }

  std::wstring FetchError() {
    patch::SManifest manifest;
    std::wstring fingerprint;
    std::wstring error;
    EXPECT_FALSE(Fetch(manifest, fingerprint, error));
    EXPECT_EQ(manifest, patch::SManifest{});
    EXPECT_TRUE(fingerprint.empty());
    return error;
  }

  void UseChannel(const std::wstring& channel) {
    service_->MutateState([&](patch::SPatchState& state) { state.channel = channel; });
  }

  std::unique_ptr<patch::CPatcherService> service_ = NewService();
};

TEST(BuildPatchUrl, JoinsTheBaseAndARelativeName) {
  LauncherConfig config;
  struct SCase {
    const wchar_t* base;
    const wchar_t* relative;
    const wchar_t* url;
  } const cases[] = {
      {L"https://host/patch", L"pointer.txt", L"https://host/patch/pointer.txt"},
      {L"https://host/patch/", L"pointer.txt", L"https://host/patch/pointer.txt"},
      {L"https://host/", L"//blobs\\ab\\abc", L"https://host/blobs/ab/abc"},
      {L"https://host", L"\\patchlist.v3.json", L"https://host/patchlist.v3.json"},
      {L"", L"/pointer.txt", L"pointer.txt"},
  };
  for (const auto& c : cases) {
    config.patchHost = c.base;
    const patch::CPatcherService service(config, {});
    EXPECT_EQ(service.BuildPatchUrl(c.relative, false), c.url) << testing::PrintToString(c.base);
  }
}

TEST(BuildPatchUrl, CacheBustAppendsTheTickCount) {
  LauncherConfig config;
  config.patchHost = L"https://host/patch";
  const std::wregex plain(LR"(https://host/patch/pointer\.txt\?v=[0-9]+)");
  EXPECT_TRUE(std::regex_match(patch::CPatcherService(config, {}).BuildPatchUrl(L"pointer.txt", true), plain));
  config.patchHost = L"https://host/patch?key=1";
  const std::wregex joined(LR"(https://host/patch\?key=1/pointer\.txt&v=[0-9]+)");
  EXPECT_TRUE(std::regex_match(patch::CPatcherService(config, {}).BuildPatchUrl(L"pointer.txt", true), joined));
}

TEST_F(FetchManifestTest, ATrimmedPointerSelectsItsListAndOnlyThePointerIsCacheBusted) {
  SRelease release;
  release.version = 17;
  release.files = SampleGameFiles();
  const std::string list = PublishRelease(release);
  PublishFile("pointer.txt", "  17\r\n");

  patch::SManifest manifest;
  std::wstring fingerprint;
  std::wstring error;
  ASSERT_TRUE(Fetch(manifest, fingerprint, error)) << testing::PrintToString(error);
  EXPECT_TRUE(error.empty());
  EXPECT_EQ(manifest.version, 17u);
  EXPECT_EQ(manifest.files.size(), 3u);
  const std::string expectedFingerprint = Sha256Hex(list);
  EXPECT_EQ(fingerprint, std::wstring(expectedFingerprint.begin(), expectedFingerprint.end()));

  const std::vector<std::string> pointer = HostRequests("pointer.txt");
  ASSERT_EQ(pointer.size(), 1u);
  EXPECT_TRUE(std::regex_search(pointer[0], std::regex(R"(/pointer\.txt\?v=[0-9]+ \|)"))) << pointer[0];
  for (const char* name : {"patchlist.v17.json", "patchlist.v17.sig"}) {
    const std::vector<std::string> lines = HostRequests(name);
    ASSERT_EQ(lines.size(), 1u) << name;
    EXPECT_NE(lines[0].find("/" + hostFolder_ + "/" + name + " |"), std::string::npos) << lines[0];
  }
}

TEST_F(FetchManifestTest, APointerThatIsNoVersionNumberIsRefused) {
  PublishFile("pointer.txt", "17\n18\n");
  EXPECT_EQ(FetchError(), L"The channel pointer is not a version number.");
}

TEST_F(FetchManifestTest, TheLargestPointerIsAcceptedAndItsListLookedFor) {
  PublishFile("pointer.txt", "18446744073709551615");
  EXPECT_EQ(FetchError(), L"The update list is not available yet.");
  EXPECT_EQ(HostRequests("patchlist.v18446744073709551615.json").size(), 1u);
}

TEST_F(FetchManifestTest, AListWhoseSignatureIsNotPublishedYetIsNotAvailable) {
  SRelease release;
  release.files = SampleGameFiles();
  PublishRelease(release);
  RemovePublishedFile("patchlist.v42.sig");
  EXPECT_EQ(FetchError(), L"The update list is not available yet.");
}

TEST_F(FetchManifestTest, AnEmptyChannelReadsTheStablePointerAndExpectsAStableList) {
  UseChannel(L"");
  SRelease release;
  release.channel = "stable";
  PublishRelease(release);
  patch::SManifest manifest;
  std::wstring fingerprint;
  std::wstring error;
  ASSERT_TRUE(Fetch(manifest, fingerprint, error)) << testing::PrintToString(error);
  EXPECT_EQ(manifest.channel, L"stable");
}

TEST_F(FetchManifestTest, TheBetaChannelReadsTheBetaPointer) {
  UseChannel(L"beta");
  SRelease stable;
  stable.version = 5;
  PublishRelease(stable);
  SRelease beta;
  beta.version = 9;
  beta.channel = "beta";
  PublishRelease(beta, "pointer-beta.txt");

  patch::SManifest manifest;
  std::wstring fingerprint;
  std::wstring error;
  ASSERT_TRUE(Fetch(manifest, fingerprint, error)) << testing::PrintToString(error);
  EXPECT_EQ(manifest.version, 9u);
  EXPECT_EQ(manifest.channel, L"beta");
  EXPECT_TRUE(HostRequests("pointer.txt", 0).empty());
}

TEST_F(FetchManifestTest, AnUpperCaseBetaReadsTheStablePointerButKeepsTheBetaFloor) {
  UseChannel(L"BETA");
  service_->RecordSeenVersion(L"beta", 9);
  SRelease release;
  release.version = 5;
  release.channel = "BETA";
  PublishRelease(release);
  PublishFile("pointer-beta.txt", "9\n");

  EXPECT_EQ(FetchError(), L"The host offered an older update than one already applied here.");
  EXPECT_EQ(HostRequests("pointer.txt").size(), 1u);
  EXPECT_TRUE(HostRequests("pointer-beta.txt", 0).empty());

  // With the beta floor lowered to the list's version the same list passes.
  service_->MutateState([](patch::SPatchState& state) { state.seenVersionBeta = 5; });
  patch::SManifest manifest;
  std::wstring fingerprint;
  std::wstring error;
  EXPECT_TRUE(Fetch(manifest, fingerprint, error)) << testing::PrintToString(error);
}

TEST_F(FetchManifestTest, AListRefusedByItsVerdictReportsTheVerdict) {
  SRelease release;
  release.channel = "beta";  // the install follows stable
  PublishRelease(release);
  EXPECT_EQ(FetchError(), L"The update list belongs to a different release channel.");
}

TEST_F(FetchManifestTest, AnUnreachableHostCannotGiveThePointer) {
  config_.patchHost = L"https://127.0.0.1:1/";
  config_.httpAttempts = 1;
  EXPECT_EQ(FetchError(), L"Could not read the channel pointer.");
}

}  // namespace
}  // namespace sync_tests
