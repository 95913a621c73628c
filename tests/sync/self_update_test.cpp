#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "patch/patcher_service.h"
#include "platform/module_path.h"
#include "platform/path_text.h"
#include "tests/sync/sync_test_support.h"
#include "text/utf.h"

namespace sync_tests {
namespace {

using patch::EPatchPhase;
using patch::SPatchView;

// The stand-in launcher built beside this test (see CMakeLists.txt).
std::string RecorderBytes() {
  const auto self = platform::ToPath(platform::QueryModulePath());
  return testing_support::ReadFileBytes(self.parent_path() / VL_RECORD_COMMAND_LINE_NAME);
}

class SelfUpdateTest : public CSyncTest {
 protected:
  void SetUp() override {
    CSyncTest::SetUp();
    release_.files = SampleGameFiles();
    release_.launcherVersion = "1.0.6";
    release_.launcherBytes = RecorderBytes();
    ASSERT_FALSE(release_.launcherBytes.empty());
    WriteGameFiles(release_.files);
  }

  std::filesystem::path UpdateFolder() const { return runtime_.path() / "launcher_update"; }

  std::string BlobName() const { return Sha256Hex(release_.launcherBytes); }

  // What the started process wrote in its working folder, the update folder; empty if it never
  // ran there. Under Wine the renamed record can be seen a moment before it can be opened.
  std::string AwaitCommandLineRecord() const {
    const auto record = UpdateFolder() / "command_line.txt";
    std::string bytes;
    for (int tries = 0; tries < 400 && bytes.empty(); ++tries) {
      if (tries > 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
      bytes = testing_support::ReadFileBytes(record);
    }
    return bytes;
  }

  SRelease release_;
};

TEST_F(SelfUpdateTest, ANewerLauncherIsStartedWithTheSwitchAndTheQuotedPathOnceAndNeverRetried) {
  PublishRelease(release_);
  auto service = NewService();
  const SPatchView started = Sync(*service);
  EXPECT_TRUE(started.launcherUpdating);
  EXPECT_EQ(started.statusText, L"Updating launcher");
  EXPECT_FALSE(started.folderChecked);

  const std::filesystem::path staged = UpdateFolder() / "VardeniLauncher-1.0.6.exe";
  EXPECT_EQ(testing_support::ReadFileBytes(staged), release_.launcherBytes);
  EXPECT_FALSE(std::filesystem::exists(runtime_.path() / "staging" / BlobName().substr(0, 2) / BlobName()));
  // Saved before the process started.
  EXPECT_NE(RuntimeFile("launcher.state").find("attempted_launcher_version=1.0.6\n"), std::string::npos);

  const std::string record = AwaitCommandLineRecord();
  // Exactly two arguments, the switch and the path (which holds a blank).
  const std::string arguments = "arg:--apply-self-update\narg:" + text::WideToUtf8(launcherPath_) + "\n";
#ifdef _WIN32
  const std::string raw = "raw:\"" + text::WideToUtf8(platform::FromPath(staged)) + "\" --apply-self-update \"" +
                          text::WideToUtf8(launcherPath_) + "\"\n";
  EXPECT_EQ(record, raw + arguments);
#else
  EXPECT_EQ(record, arguments);
#endif

  // The same run does not try again: the folder is decided as usual.
  const SPatchView again = Sync(*service);
  EXPECT_FALSE(again.launcherUpdating);
  EXPECT_EQ(again.phase, EPatchPhase::UpToDate);
  // Nor does the next run, stopped by the recorded attempt.
  const SPatchView restarted = Sync(*NewService());
  EXPECT_FALSE(restarted.launcherUpdating);
  EXPECT_TRUE(restarted.folderChecked);
  EXPECT_EQ(HostRequests(BlobName()).size(), 1u);
}

TEST_F(SelfUpdateTest, ALauncherThatDoesNotMatchItsDigestIsDroppedAndNotFetchedAgainThisRun) {
  release_.launcherSha256 = Sha256Hex("the bytes the list promised");
  PublishRelease(release_);
  auto service = NewService();
  const SPatchView first = Sync(*service);
  EXPECT_FALSE(first.launcherUpdating);
  EXPECT_EQ(first.phase, EPatchPhase::UpToDate);  // the game is still checked
  EXPECT_FALSE(std::filesystem::exists(UpdateFolder()));
  EXPECT_TRUE(service->GetStateSnapshot().attemptedLauncherVersion.empty());

  Sync(*service);
  EXPECT_EQ(HostRequests(release_.launcherSha256).size(), 1u);
  // The memory is the run's: a new launcher run tries once more.
  Sync(*NewService());
  EXPECT_EQ(HostRequests(release_.launcherSha256, 2).size(), 2u);
}

TEST_F(SelfUpdateTest, OnlyANewerWellFormedLauncherIsStaged) {
  auto service = NewService();
  struct SCase {
    bool hasLauncher;
    const wchar_t* version;
    std::wstring sha256;
    const wchar_t* error;
  } const cases[] = {
      {false, L"1.0.6", std::wstring(64, L'a'), L"The update list names no launcher."},
      {true, L"1.0.5", std::wstring(64, L'a'), L"The published launcher is not newer than this one."},
      {true, L"1.0.6", std::wstring(64, L'A'), L"The update list names a malformed launcher digest."},
      {true, L"1.0.6", std::wstring(63, L'a'), L"The update list names a malformed launcher digest."},
  };
  for (const SCase& c : cases) {
    patch::SManifest manifest;
    manifest.hasLauncher = c.hasLauncher;
    manifest.launcherProductVersion = c.version;
    manifest.launcherSha256 = c.sha256;
    std::wstring error;
    EXPECT_FALSE(service->StageAndLaunchUpdate(http_, manifest, error));
    EXPECT_EQ(error, c.error) << testing::PrintToString(c.version);
    EXPECT_FALSE(service->MaybeStartLauncherSelfUpdate(http_, manifest));
  }
  EXPECT_FALSE(std::filesystem::exists(runtime_.path() / "staging"));
  EXPECT_TRUE(service->GetStateSnapshot().attemptedLauncherVersion.empty());
}

}  // namespace
}  // namespace sync_tests
