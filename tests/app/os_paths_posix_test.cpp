// Linux: the XDG data folder rule, $HOME as the profile, and "/" paths as absolute game folders.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "app/paths.h"
#include "platform/environment.h"
#include "tests/app/scoped_environment.h"

namespace {

using testing_support::ScopedEnvironment;

// The page cache follows the same rule, so it is never in the shared /tmp; the
// profile is $HOME as it stands.
TEST(LinuxUserFoldersTest, DataAndCacheFoldersFollowTheXdgRuleAndTheProfileIsHome) {
  const struct {
    std::optional<std::wstring> xdgHome;
    std::optional<std::wstring> home;
    std::wstring data;
    std::wstring cache;
  } cases[] = {
      {L"/xdg/ann", L"/home/ann", L"/xdg/ann", L"/xdg/ann"},
      {std::nullopt, L"/home/zoë", L"/home/zoë/.local/share", L"/home/zoë/.cache"},
      {L"", L"/home/ann", L"/home/ann/.local/share", L"/home/ann/.cache"},
      {L"relative/xdg", L"/home/ann", L"/home/ann/.local/share", L"/home/ann/.cache"},
      {std::nullopt, std::nullopt, L"", L""},
      {std::nullopt, L"", L"", L""},
  };
  for (const auto& c : cases) {
    const ScopedEnvironment dataHome(L"XDG_DATA_HOME", c.xdgHome), cacheHome(L"XDG_CACHE_HOME", c.xdgHome),
        home(L"HOME", c.home);
    EXPECT_EQ(platform::LocalAppDataDirectory(), c.data) << c.xdgHome.value_or(L"<unset>");
    EXPECT_EQ(LegacyDataDirectory(), c.data.empty() ? L"" : c.data + L"/OmbrisaAdminPanel/Patcher");
    EXPECT_EQ(platform::UserCacheDirectory(), c.cache) << c.xdgHome.value_or(L"<unset>");
    EXPECT_EQ(platform::UserProfileDirectory(), c.home.value_or(L""));
    if (!c.cache.empty()) {
      EXPECT_EQ(UiCacheDirectory(), c.cache + L"/OmbrisaAdminPanel/Patcher/ui_cache");
    }
  }
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
