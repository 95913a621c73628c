#include <gtest/gtest.h>

#include <filesystem>

#include "patch/patcher_service.h"
#include "platform/path_text.h"
#include "tests/orphans/orphan_test_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::TempDir;

patch::SServiceFolders FoldersFor(const TempDir& dir, const fs::path& launcher) {
  return {platform::FromPath(dir.path() / "runtime"), L"", platform::FromPath(dir.path() / "game"),
          platform::FromPath(launcher)};
}

std::vector<std::wstring> FullScan(const patch::CPatcherService& service) {
  patch::SOrphanScan scan;
  std::wstring error;
  EXPECT_TRUE(service.ScanOrphans(orphan_tests::ManifestOf({L"bin/a.dat"}), patch::kUnlimitedOrphanSample, scan,
                                  error));
  return scan.orphanSample;
}

TEST(PatcherServiceOrphans, SparesTheRunningLauncherInTheGameFolder) {
  TempDir dir;
  const fs::path launcher = dir.Write("game/Launcher.EXE", "running");
  const fs::path old = dir.Write("game/old.dat", "old");
  dir.Write("game/bin/a.dat", "listed");
  const patch::CPatcherService service(CompiledLauncherConfig(),
                                       FoldersFor(dir, dir.path() / "game" / "sub" / ".." / "Launcher.EXE"));

  const std::vector<std::wstring> orphans = FullScan(service);
  EXPECT_EQ(orphans, std::vector<std::wstring>{L"old.dat"});
  const patch::SOrphanRemoval removal = service.RemoveOrphans(orphans);
  EXPECT_EQ(removal.removedFiles, 1u);
  EXPECT_FALSE(fs::exists(old));
  EXPECT_TRUE(fs::exists(launcher));
}

TEST(PatcherServiceOrphans, ALauncherElsewhereSparesNothingInTheGameFolder) {
  TempDir dir;
  dir.Write("game/launcher.exe", "a stray copy");
  dir.Write("game/bin/a.dat", "listed");
  const patch::CPatcherService service(CompiledLauncherConfig(), FoldersFor(dir, dir.path() / "launcher.exe"));
  EXPECT_EQ(FullScan(service), std::vector<std::wstring>{L"launcher.exe"});
}

}  // namespace
