// Links inside the game folder may point anywhere; neither the scan nor the
// removal may follow them out.
#include <gtest/gtest.h>

#include <filesystem>

#include "patch/orphan_scan.h"
#include "platform/path_text.h"
#include "tests/orphans/orphan_test_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::TempDir;

TEST(OrphanLinksPosix, LinksAreNeitherReportedNorFollowed) {
  TempDir dir;
  const fs::path secret = dir.Write("victim/secret.txt", "keep");
  const fs::path outside = dir.Write("outside.txt", "keep");
  dir.Write("game/kept.dat", "listed");
  fs::create_directory_symlink(dir.path() / "victim", dir.path() / "game" / "link");
  fs::create_directory_symlink(dir.path(), dir.path() / "game" / "loop");
  fs::create_symlink(outside, dir.path() / "game" / "alias.txt");
  const std::wstring game = platform::FromPath(dir.path() / "game");

  patch::SOrphanScan scan;
  std::wstring error;
  ASSERT_TRUE(patch::ScanOrphans(game, orphan_tests::ManifestOf({L"kept.dat"}), patch::kUnlimitedOrphanSample, L"",
                                 scan, error));
  EXPECT_EQ(scan.orphanFiles, 0u);

  const patch::SOrphanRemoval removal = patch::RemoveOrphans(
      game, {L"link/secret.txt", L"LINK/Secret.txt", L"alias.txt", L"loop/outside.txt", L"loop/victim/secret.txt"});
  EXPECT_EQ(removal.removedFiles, 0u);
  EXPECT_EQ(removal.failedFiles, 5u);
  EXPECT_TRUE(fs::exists(secret));
  EXPECT_TRUE(fs::exists(outside));
  EXPECT_TRUE(fs::is_symlink(dir.path() / "game" / "alias.txt"));
}

}  // namespace
