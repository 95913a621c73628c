#include "platform/process_start.h"

#include <gtest/gtest.h>

#include "platform/path_text.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using launch_test::WaitForProbeRecord;
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

}  // namespace
