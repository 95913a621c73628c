// Windows: the folders come from LOCALAPPDATA and USERPROFILE, read with the real Win32 calls.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "app/paths.h"
#include "platform/environment.h"
#include "tests/app/scoped_environment.h"

namespace {

using testing_support::ScopedEnvironment;

TEST(WindowsUserFoldersTest, LocalAppDataAndProfileComeFromTheirVariablesAndTheLegacyFolderNeedsOne) {
  // The system sets both.
  EXPECT_FALSE(platform::LocalAppDataDirectory().empty());
  EXPECT_FALSE(platform::UserProfileDirectory().empty());
  {
    const ScopedEnvironment local(L"LOCALAPPDATA", L"C:\\Users\\Zoë\\AppData\\Local"),
        profile(L"USERPROFILE", L"C:\\Users\\Zoë");
    EXPECT_EQ(platform::LocalAppDataDirectory(), L"C:\\Users\\Zoë\\AppData\\Local");
    EXPECT_EQ(platform::UserProfileDirectory(), L"C:\\Users\\Zoë");
    EXPECT_EQ(LegacyDataDirectory(), L"C:\\Users\\Zoë\\AppData\\Local\\OmbrisaAdminPanel\\Patcher");
  }
  const ScopedEnvironment local(L"LOCALAPPDATA", std::nullopt);
  EXPECT_EQ(platform::LocalAppDataDirectory(), L"");
  EXPECT_EQ(LegacyDataDirectory(), L"");
}

TEST(WindowsUserFoldersTest, PageCacheLivesInTheTemporaryFolder) {
  EXPECT_EQ(std::filesystem::path(UiCacheDirectory()),
            std::filesystem::temp_directory_path() / "OmbrisaAdminPanel" / "Patcher" / "ui_cache");
}

}  // namespace
