#include <gtest/gtest.h>

#include "app/game_launch.h"
#include "platform/path_text.h"
#include "platform/process_list.h"
#include "text/utf.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using launch_test::Eventually;
using platform::EProcessSearch;
using testing_support::TempDir;

// A probe that keeps running, named "vlgameprobe" plus the system's
// executable extension (15 characters on Windows, within Linux's comm limit).
class CHeldProbe {
 public:
  explicit CHeldProbe(const fs::path& folder) : folder_(folder) {
    const fs::path copy = launch_test::CopyProbe(folder, kName);
    std::uint32_t code = 0;
    started_ = launch_test::Start(copy, {L"--hold"}, folder, code) && !launch_test::WaitForProbeRecord(folder).empty();
  }
  // Waits for it to end, so it neither outlives the test nor blocks removing its folder.
  ~CHeldProbe() {
    launch_test::ReleaseProbe(folder_);
    Eventually([] { return platform::FindProcessByFileName(kName) == EProcessSearch::NotFound; });
  }
  CHeldProbe(const CHeldProbe&) = delete;
  CHeldProbe& operator=(const CHeldProbe&) = delete;

  bool started() const { return started_; }
  static inline const std::wstring kName = launch_test::ProbeName(L"vlgameprobe");

 private:
  fs::path folder_;
  bool started_ = false;
};

TEST(ProcessWalk, ARunningGameOfTheSameNameInAnyCaseBlocksWorkUntilItEnds) {
  TempDir dir;
  LauncherConfig config;
  config.gameFolder = platform::FromPath(dir.path() / "app");
  config.gameExecutable = launch_test::ProbeName(L"VlGameProbe");
  std::wstring runningName;
  std::wstring error;
  EXPECT_TRUE(IsGameNotRunning(runningName, error, config));
  EXPECT_TRUE(runningName.empty());

  // Started from another folder than the game's: any process of the name counts.
  CHeldProbe probe(dir.path() / "elsewhere");
  ASSERT_TRUE(probe.started());
  EXPECT_FALSE(IsGameNotRunning(runningName, error, config));
  EXPECT_EQ(runningName, config.gameExecutable);
  EXPECT_TRUE(error.empty());

  struct SCase {
    std::wstring name;
    EProcessSearch expected;
  };
  const SCase cases[] = {
      {launch_test::ProbeName(L"VLGAMEPROBE"), EProcessSearch::Found},
      {launch_test::ProbeName(L"vlgameprob"), EProcessSearch::NotFound},
      {launch_test::ProbeName(L"xvlgameprobe"), EProcessSearch::NotFound},
      {L"vlgameprobe", launch_test::ProbePath().has_extension() ? EProcessSearch::NotFound : EProcessSearch::Found},
  };
  for (const SCase& c : cases) {
    EXPECT_EQ(platform::FindProcessByFileName(c.name), c.expected) << text::WideToUtf8(c.name);
  }

  launch_test::ReleaseProbe(dir.path() / "elsewhere");
  EXPECT_TRUE(Eventually([&] { return IsGameNotRunning(runningName, error, config); }));
}

}  // namespace
