#include "app/self_update_mode.h"

#include <gtest/gtest.h>

#include "log/log.h"
#include "platform/path_text.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFileBytes;
using testing_support::TempDir;

constexpr patch::SUnlockWait kShortWait{2, std::chrono::milliseconds(10)};

TEST(SelfUpdateMode, RecognisesOnlyTheSwitchWithATarget) {
  struct SCase {
    std::vector<std::wstring> arguments;
    bool recognised;
    std::wstring target;
  };
  const SCase cases[] = {
      {{L"new.exe", L"--apply-self-update", L"C:\\Games\\old.exe"}, true, L"C:\\Games\\old.exe"},
      {{L"new.exe", L"--APPLY-Self-Update", L"C:\\Games\\old.exe", L"ignored"}, true, L"C:\\Games\\old.exe"},
      {{L"new.exe", L"--apply-self-update", L""}, true, L""},
      {{L"new.exe", L"--apply-self-update"}, false, L""},
      {{L"new.exe", L"C:\\Games\\old.exe", L"--apply-self-update"}, false, L""},
      {{L"new.exe", L"--apply-self-updater", L"C:\\Games\\old.exe"}, false, L""},
      {{}, false, L""},
  };
  for (const SCase& c : cases) {
    std::wstring target;
    EXPECT_EQ(ParseSelfUpdateCommandLine(c.arguments, target), c.recognised);
    EXPECT_EQ(target, c.target);
  }
}

TEST(SelfUpdateMode, ReplacesTheTargetAndStartsItInItsFolderWithoutArguments) {
  TempDir dir;
  const fs::path target = dir.Write("install folder/VardeniLauncher.exe", "the old launcher");
  logging::OpenLog(dir.wide(), L"", L"");
  std::wstring error;
  EXPECT_EQ(ApplySelfUpdate(platform::FromPath(launch_test::ProbePath()), platform::FromPath(target), kShortWait,
                            error),
            0);
  EXPECT_TRUE(error.empty());
  const std::vector<std::string> record = launch_test::WaitForProbeRecord(target.parent_path());
  ASSERT_EQ(record.size(), 1u);
  EXPECT_TRUE(fs::equivalent(fs::path(record[0]), target.parent_path()));
  EXPECT_EQ(ReadFileBytes(target), ReadFileBytes(launch_test::ProbePath()));
  logging::OpenLog(L"", L"", L"");
  EXPECT_NE(ReadFileBytes(dir.path() / "launcher.log").find("[self-update] applied"), std::string::npos);
}

TEST(SelfUpdateMode, FailuresGiveTheirSentenceAndExitCodeOne) {
  TempDir dir;
  const fs::path source = dir.Write("launcher_update/VardeniLauncher-1.0.6.exe", "not a program");
  const std::wstring sourceText = platform::FromPath(source);
  const fs::path target = dir.Write("VardeniLauncher.exe", "old");
  // A folder where the target should be cannot be replaced by a file.
  const fs::path folderTarget = dir.path() / "folder.exe";
  fs::create_directories(folderTarget);
  struct SCase {
    std::wstring source;
    std::wstring target;
    std::wstring expected;
  };
  const SCase cases[] = {
      {L"", platform::FromPath(target), L"Launcher self-update paths are invalid."},
      {sourceText, L"", L"Launcher self-update paths are invalid."},
      {sourceText, platform::FromPath(folderTarget), L"Could not replace the launcher executable."},
      {sourceText, platform::FromPath(target), L"Could not start launcher self-update process."},
  };
  logging::OpenLog(dir.wide(), L"", L"");
  for (const SCase& c : cases) {
    std::wstring error;
    EXPECT_EQ(ApplySelfUpdate(c.source, c.target, kShortWait, error), 1);
    EXPECT_EQ(error, c.expected);
  }
  logging::OpenLog(L"", L"", L"");
  EXPECT_NE(ReadFileBytes(dir.path() / "launcher.log").find("[self-update] failed: Could not replace the launcher"),
            std::string::npos);
  EXPECT_TRUE(fs::is_directory(folderTarget));
}

}  // namespace
