#include "app/paths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/module_path.h"
#include "platform/path_text.h"
#include "tests/app/scoped_environment.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using platform::FromPath;
using platform::ToPath;

// Undoes SetInstallDataDirectory so later tests see the fallback again.
struct InstallDataReset {
  ~InstallDataReset() { SetInstallDataDirectory(L""); }
};

TEST(ModulePathTest, UntrustedAnswersFallBackToTheCurrentDirectory) {
  const std::wstring current = FromPath(ToPath(L"work") / "current");
  const std::wstring fallback = FromPath(ToPath(current) / "TARNHOLD.exe");
  const std::wstring fits(258, L'a');
  EXPECT_EQ(ModulePathFromQuery(fits, current), fits);
  // Empty, 259 (filled the buffer but for the terminator), 260 (cut off), longer (the Linux link).
  for (const std::wstring& untrusted : {std::wstring(), fits + L"a", fits + L"aa", fits + L"aaaaaaa"}) {
    EXPECT_EQ(ModulePathFromQuery(untrusted, current), fallback) << untrusted.size();
  }
}

TEST(ModulePathTest, NamesTheRunningTestExecutable) {
  const std::wstring reported = platform::QueryModulePath();
  ASSERT_FALSE(reported.empty());
  ASSERT_LT(reported.size(), platform::kModulePathBufferChars - 1);
  EXPECT_EQ(ModulePath(), reported);

  const fs::path module = ToPath(ModulePath());
  EXPECT_TRUE(module.is_absolute());
  EXPECT_EQ(module.stem(), fs::path("vl_app_tests"));
  EXPECT_TRUE(fs::is_regular_file(module));
  EXPECT_EQ(ToPath(ModuleDirectory()), module.parent_path());
}

TEST(RuntimeDirectoryTest, UsesTheInstallDataFolderOnceSet) {
  const InstallDataReset reset;
  const std::wstring fallback = FromPath(ToPath(ModuleDirectory()) / ".runtime");
  EXPECT_EQ(RuntimeDirectory(), fallback);

  const testing_support::TempDir install;
  SetInstallDataDirectory(install.wide());
  EXPECT_EQ(RuntimeDirectory(), install.wide());

  SetInstallDataDirectory(L"");
  EXPECT_EQ(RuntimeDirectory(), fallback);
}

TEST(InstallDataDirectoryTest, AcceptsOnlyThirtyTwoLowerCaseHexDigits) {
  const std::wstring good = L"0123456789abcdef0123456789abcdef";
  const std::wstring base = FromPath(ToPath(L"data") / "local");
  const struct {
    std::wstring identity;
    bool accepted;
  } cases[] = {
      {good, true},           {L"ffffffffffffffffffffffffffffffff", true}, {L"0123456789ABCDEF0123456789ABCDEF", false},
      {good.substr(0, 31), false}, {good + L"0", false}, {L"0123456789abcdeg0123456789abcdef", false},
      {L"", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsInstallIdentity(c.identity), c.accepted) << c.identity;
    const std::wstring expected = c.accepted ? FromPath(ToPath(base) / "Vardeni" / "Launcher" / c.identity) : L"";
    EXPECT_EQ(InstallDataDirectory(base, c.identity), expected) << c.identity;
  }
  EXPECT_EQ(InstallDataDirectory(L"", good), L"");
}

TEST(UiCacheDirectoryTest, FallsBackToTheRuntimeFolderWithoutAUserCacheFolder) {
  const InstallDataReset reset;
  const testing_support::TempDir scratch;
  const std::wstring missing = FromPath(scratch.path() / "missing");
  // Every variable either system consults for the user's cache base points nowhere.
  const testing_support::ScopedEnvironment tmpdir(L"TMPDIR", missing), tmp(L"TMP", missing),
      temp(L"TEMP", missing), tempdir(L"TEMPDIR", missing), cacheHome(L"XDG_CACHE_HOME", std::nullopt),
      home(L"HOME", std::nullopt);
  SetInstallDataDirectory(scratch.wide());
  EXPECT_EQ(ToPath(UiCacheDirectory()), scratch.path() / "OmbrisaAdminPanel" / "Patcher" / "ui_cache");
}

TEST(GameExecutablePathTest, AMissingGameStaysBesideTheLauncher) {
  LauncherConfig config;
  config.gameFolder = L"vl-absent-game";
  config.gameExecutable = L"game.exe";
  EXPECT_EQ(ToPath(GameExecutablePath(config)), ToPath(ModuleDirectory()) / "vl-absent-game" / "game.exe");
}

}  // namespace
