#include <gtest/gtest.h>

#include <functional>
#include <regex>

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

}  // namespace
}  // namespace sync_tests
