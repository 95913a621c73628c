// Linux: the XDG data folder rule, $HOME as the profile, and "/" paths as absolute game folders.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "app/paths.h"
#include "platform/environment.h"
#include "tests/app/scoped_environment.h"

namespace {

using testing_support::ScopedEnvironment;

TEST(LinuxUserFoldersTest, LocalAppDataFollowsTheXdgRule) {
  const struct {
    std::optional<std::wstring> dataHome;
    std::optional<std::wstring> home;
    std::wstring expected;
  } cases[] = {
      {L"/data/ann", L"/home/ann", L"/data/ann"},
      {std::nullopt, L"/home/ann", L"/home/ann/.local/share"},
      {L"", L"/home/ann", L"/home/ann/.local/share"},
      {L"relative/data", L"/home/ann", L"/home/ann/.local/share"},
      {std::nullopt, std::nullopt, L""},
      {std::nullopt, L"", L""},
  };
  for (const auto& c : cases) {
    const ScopedEnvironment dataHome(L"XDG_DATA_HOME", c.dataHome), home(L"HOME", c.home);
    EXPECT_EQ(platform::LocalAppDataDirectory(), c.expected) << c.dataHome.value_or(L"<unset>");
    EXPECT_EQ(LegacyDataDirectory(), c.expected.empty() ? L"" : c.expected + L"/OmbrisaAdminPanel/Patcher");
  }
}

TEST(LinuxUserFoldersTest, ProfileIsHome) {
  const ScopedEnvironment dataHome(L"XDG_DATA_HOME", std::nullopt), home(L"HOME", L"/home/zoë");
  EXPECT_EQ(platform::UserProfileDirectory(), L"/home/zoë");
}

TEST(LinuxGameFolderTest, SlashPathsAreAbsolute) {
  int lookups = 0;
  const auto exists = [&lookups](const std::wstring&) {
    ++lookups;
    return false;
  };
  EXPECT_EQ(ResolveGameDirectory(L"/opt/vardeni/app", L"/srv/launcher", L"vardeni2.exe", exists), L"/opt/vardeni/app");
  EXPECT_EQ(lookups, 0);
  // A backslash is an ordinary character in a Linux file name.
  EXPECT_EQ(ResolveGameDirectory(L"\\app", L"/srv/launcher", L"vardeni2.exe", exists), L"/srv/launcher/\\app");
}

}  // namespace
