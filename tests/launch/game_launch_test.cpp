#include "app/game_launch.h"

#include <gtest/gtest.h>

#include "platform/path_text.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFileBytes;
using testing_support::TempDir;

LauncherConfig GameIn(const fs::path& folder) {
  LauncherConfig config;
  config.gameFolder = platform::FromPath(folder);
  config.gameExecutable = L"vardeni2.exe";
  return config;
}

TEST(GameLaunch, AMissingExecutableStopsBeforeSeedingAndAPresentOneStartsInItsFolderAfterSeeding) {
  TempDir dir;
  const fs::path game = dir.path() / "app";
  fs::create_directories(game);
  for (const auto launch : {&LaunchGame, &PrepareGameLaunch}) {
    std::wstring error;
    EXPECT_FALSE(launch(error, GameIn(game)));
    EXPECT_EQ(error, L"Configured game executable not found: " + platform::FromPath(game / "vardeni2.exe"));
  }
  EXPECT_TRUE(fs::is_empty(game));

  launch_test::CopyProbe(game, L"vardeni2.exe");
  dir.Write("app/mouse.cfg", "");
  for (const auto launch : {&LaunchGame, &PrepareGameLaunch}) {
    fs::remove(game / "korvex.cfg");
    fs::remove(game / "probe.out");
    std::wstring error;
    ASSERT_TRUE(launch(error, GameIn(game))) << text::WideToUtf8(error);
    const std::vector<std::string> record = launch_test::WaitForProbeRecord(game);
    ASSERT_EQ(record.size(), 1u) << "started with no arguments";
    EXPECT_TRUE(fs::equivalent(fs::path(record[0]), game));
    EXPECT_EQ(ReadFileBytes(game / "korvex.cfg"), launch_test::ResourceText(204));
    EXPECT_EQ(ReadFileBytes(game / "mouse.cfg"), "");
  }
}

TEST(GameLaunch, SystemMessagesLoseTrailingStopsAndGainTheCode) {
  struct SCase {
    std::uint32_t code;
    std::wstring message;
    std::wstring expected;
  };
  const SCase cases[] = {
      {2, L"The system cannot find the file specified.\r\n", L"The system cannot find the file specified (2)"},
      {5, L"Access is denied. ", L"Access is denied (5)"},
      {1234, L"", L"Windows error 1234"},
      {87, L". \r\n.", L"Windows error 87"},
  };
  for (const SCase& c : cases) EXPECT_EQ(FormatSystemMessage(c.code, c.message), c.expected);

  EXPECT_EQ(FormatWindowsError(0), L"");
  const std::wstring real = FormatWindowsError(2);
  ASSERT_GT(real.size(), 4u);
  EXPECT_EQ(real.substr(real.size() - 4), L" (2)");
}

}  // namespace
