#include <gtest/gtest.h>

#include <filesystem>

#include "patch/patcher_service.h"
#include "platform/path_text.h"
#include "tests/orphans/orphan_test_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::TempDir;

TEST(PatcherServiceOrphans, SparesTheRunningLauncherInTheGameFolder) {
  TempDir dir;
  const fs::path launcher = dir.Write("game/Launcher.EXE", "running");
  const fs::path old = dir.Write("game/old.dat", "old");
  dir.Write("game/bin/a.dat", "listed");
  const patch::CPatcherService service(
      CompiledLauncherConfig(),
      {platform::FromPath(dir.path() / "runtime"), L"", platform::FromPath(dir.path() / "game"),
       platform::FromPath(dir.path() / "game" / "sub" / ".." / "Launcher.EXE")});

  patch::SOrphanScan scan;
  std::wstring error;
  ASSERT_TRUE(service.ScanOrphans(orphan_tests::ManifestOf({L"bin/a.dat"}), patch::kUnlimitedOrphanSample, scan,
                                  error));
  EXPECT_EQ(scan.orphanSample, std::vector<std::wstring>{L"old.dat"});
  EXPECT_EQ(service.RemoveOrphans(scan.orphanSample).removedFiles, 1u);
  EXPECT_FALSE(fs::exists(old));
  EXPECT_TRUE(fs::exists(launcher));
}

}  // namespace
