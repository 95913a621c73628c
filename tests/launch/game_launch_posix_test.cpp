// Linux starts a Windows game through Wine when one is on PATH; a stand-in
// "wine" script shows what it was asked to run.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>

#include "app/game_launch.h"
#include "platform/environment.h"
#include "platform/path_text.h"
#include "tests/app/scoped_environment.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ScopedEnvironment;
using testing_support::TempDir;

TEST(GameLaunchPosix, AWindowsImageGoesThroughWineFromPath) {
  TempDir dir;
  // A descriptor of ours without close-on-exec, as a library may leave one, must not reach the game.
  // Numbered high, clear of those the shell opens for itself.
  const int leaked = ::fcntl(STDIN_FILENO, F_DUPFD, 40);
  ASSERT_GE(leaked, 40);
  const std::string fdState = "$(test -e /proc/$$/fd/" + std::to_string(leaked) + " && echo inherited || echo closed)";
  const fs::path wine = dir.Write("bin/wine", "#!/bin/sh\nprintf '%s\\n' \"$PWD\" \"$@\" \"" + fdState +
                                                  "\" > probe.out.tmp && mv probe.out.tmp probe.out\n");
  fs::permissions(wine, fs::perms::owner_all);
  const fs::path game = dir.Write("app/vardeni2.exe", std::string("MZ\x90\0", 4));
  // Searched in order: a missing folder and an empty entry are passed over.
  ScopedEnvironment path(L"PATH", platform::FromPath(dir.path() / "missing") + L"::" +
                                      platform::FromPath(wine.parent_path()) + L":" +
                                      platform::EnvironmentVariable(L"PATH"));

  std::wstring error;
  ASSERT_TRUE(StartGameProcess(platform::FromPath(game), error)) << text::WideToUtf8(error);
  const std::vector<std::string> record = launch_test::WaitForProbeRecord(game.parent_path());
  ::close(leaked);
  ASSERT_EQ(record.size(), 3u);
  EXPECT_TRUE(fs::equivalent(fs::path(record[0]), game.parent_path()));
  EXPECT_EQ(record[1], game.string());
  EXPECT_EQ(record[2], "closed");
}

TEST(GameLaunchPosix, AFailedStartNamesTheMethodAndTheSystemsReason) {
  TempDir dir;
  // Not executable: even root is refused.
  const fs::path game = dir.Write("app/vardeni2.exe", "not a program");
  std::wstring error;
  EXPECT_FALSE(StartGameProcess(platform::FromPath(game), error));
  EXPECT_EQ(error, L"Could not start game executable: " + platform::FromPath(game) + L" | posix_spawn: " +
                       FormatWindowsError(EACCES));
}

}  // namespace
