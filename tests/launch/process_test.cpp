// Starting processes and finding them by name, with the probe program.
#include <gtest/gtest.h>

#include "app/game_launch.h"
#include "platform/path_text.h"
#include "platform/process_list.h"
#include "platform/process_start.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

namespace fs = std::filesystem;
using launch_test::Eventually;
using launch_test::WaitForProbeRecord;
using platform::EProcessSearch;
using testing_support::TempDir;

TEST(ProcessStart, ComposesCommandLinesThatReadBackAsTheArguments) {
  struct SCase {
    std::vector<std::wstring> arguments;
    std::wstring expected;
  };
  const SCase cases[] = {
      {{}, LR"("C:\Games\app\vardeni2.exe")"},
      {{L"--apply-self-update", LR"(C:\Games\Vardeni Launcher.exe)"},
       LR"("C:\Games\app\vardeni2.exe" --apply-self-update "C:\Games\Vardeni Launcher.exe")"},
      {{LR"(C:\no-blanks\old.exe)"}, LR"("C:\Games\app\vardeni2.exe" "C:\no-blanks\old.exe")"},
      {{L""}, LR"("C:\Games\app\vardeni2.exe" "")"},
      {{LR"(say "hi")"}, LR"("C:\Games\app\vardeni2.exe" "say \"hi\"")"},
      {{LR"(C:\ends in\)"}, LR"("C:\Games\app\vardeni2.exe" "C:\ends in\\")"},
      {{LR"(a\\"b)"}, LR"("C:\Games\app\vardeni2.exe" "a\\\\\"b")"},
      {{L"level=3", L"x.y_z"}, LR"("C:\Games\app\vardeni2.exe" level=3 x.y_z)"},
  };
  for (const SCase& c : cases) {
    EXPECT_EQ(platform::ComposeCommandLine(LR"(C:\Games\app\vardeni2.exe)", c.arguments), c.expected);
  }
}

TEST(ProcessStart, StartsTheProgramInTheGivenFolderWithEachArgumentIntact) {
  TempDir dir;
  const fs::path work = dir.path() / "work folder";
  fs::create_directories(work);
  const std::vector<std::wstring> arguments = {L"plain", L"with blank", LR"(quote"inside)", LR"(trailing\)",
                                               LR"(back\\"slash)", L""};
  std::uint32_t code = 1;
  ASSERT_TRUE(launch_test::Start(launch_test::ProbePath(), arguments, work, code));
  EXPECT_EQ(code, 0u);
  const std::vector<std::string> record = WaitForProbeRecord(work);
  ASSERT_EQ(record.size(), arguments.size() + 1);
  EXPECT_TRUE(fs::equivalent(fs::path(record[0]), work));
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    EXPECT_EQ(record[i + 1], std::string(arguments[i].begin(), arguments[i].end()));
  }

  EXPECT_FALSE(launch_test::Start(dir.path() / "absent.exe", {}, dir.path(), code));
  EXPECT_NE(code, 0u);
}

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
