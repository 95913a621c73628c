#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "patch/orphan_scan.h"
#include "patch/patcher_service.h"
#include "patch/staged_promotion.h"
#include "platform/file_time.h"
#include "platform/path_text.h"
#include "tests/orphans/orphan_test_support.h"
#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

namespace fs = std::filesystem;
using namespace orphan_tests;
using testing_support::Sha256Of;
using testing_support::TempDir;

// One of them read-only; paths past 260 characters have a test of their own below.
TEST(OrphanRemoval, RemovesListedFilesInAnySpellingAndCountsThem) {
  TempDir dir;
  const std::vector<fs::path> removed = {dir.Write("game/Old/Patch1.DAT", "123456"),
                                         dir.Write("game/Sub2/File.DAT", "xyz")};
  const fs::path kept = dir.Write("game/kept.dat", "listed");
  fs::permissions(removed[1], fs::perms::owner_read);

  const patch::SOrphanRemoval removal = patch::RemoveOrphans(platform::FromPath(dir.path() / "game"),
                                                             {L"old/patch1.dat", L"SUB2\\file.dat", L"gone.dat"});
  EXPECT_EQ(removal.removedFiles, 2u);
  EXPECT_EQ(removal.removedBytes, 9u);
  EXPECT_EQ(removal.failedFiles, 1u);
  for (const fs::path& file : removed) EXPECT_FALSE(fs::exists(file)) << file.string();
  EXPECT_TRUE(fs::exists(kept));
}

TEST(OrphanRemoval, NeverTouchesAnUnsafeOrProtectedPath) {
  TempDir dir;
  const std::vector<fs::path> files = {
      dir.Write("outside.txt", "keep"),        dir.Write("game/b.txt", "keep"),
      dir.Write("game/a/b.txt", "keep"),       dir.Write("game/sub/c.txt", "keep"),
      dir.Write("game/screenshots/s.jpg", "keep"), dir.Write("game/logs/chatlog1.txt", "keep"),
  };
  const std::wstring game = platform::FromPath(dir.path() / "game");
  const std::wstring outside = platform::FromPath(files[0]);

  const std::vector<std::wstring> refused = {
      L"",          L"../outside.txt",     L"..\\outside.txt", L"a/../../outside.txt",
      L"a/../b.txt", L"./b.txt",           L"a/./b.txt",       L"a\\.\\b.txt",
      L"a/b.txt/..", outside,              L"\\\\?\\" + outside, L"/outside.txt",
      L"\\outside.txt", L"C:/outside.txt", L"c:outside.txt",   L"C:\\outside.txt",
      L"\\\\server\\share\\outside.txt",   L"//server/share/outside.txt",
      L"sub/",      L"Screenshots\\S.JPG", L"logs/ChatLog1.txt", std::wstring(L"b.txt\0.dat", 10),
  };
  for (const std::wstring& path : refused) {
    EXPECT_FALSE(patch::IsRemovableOrphanPath(path)) << text::WideToUtf8(path);
    EXPECT_EQ(patch::RemoveOrphans(game, {path}).failedFiles, 1u) << text::WideToUtf8(path);
  }
  // A folder passes the text rules, yet removal deletes files only; and a
  // stream name reaches no file (on Windows the main stream is the file).
  EXPECT_EQ(patch::RemoveOrphans(game, {L"sub", L"b.txt::$DATA"}).failedFiles, 2u);
  for (const fs::path& file : files) EXPECT_TRUE(fs::exists(file)) << file.string();
  // Dots inside a name are ordinary.
  for (const wchar_t* path : {L"Old\\Patch1.DAT", L"a..b/c.dat", L"..hidden/x.dat", L"x/...dat"}) {
    EXPECT_TRUE(patch::IsRemovableOrphanPath(path)) << text::WideToUtf8(path);
  }
}

// Windows needs its long-path form for each of these steps.
TEST(OrphanRemoval, AFileFarPast260CharactersIsPromotedVerifiedScannedAndRemoved) {
  TempDir dir;
  std::wstring folders = L"deep";
  while (folders.size() < 320) folders += L"/folder_of_a_deep_tree";
  const std::wstring relative = folders + L"/Old.dat";
  const fs::path staged = dir.Write("staged", "hello");
  const fs::path target = dir.path() / "game" / platform::ToPath(relative);
  std::wstring error;
  ASSERT_TRUE(patch::PrepareStagedPromotion(staged, target, error) && patch::PromoteStagedFile(staged, target, error))
      << text::WideToUtf8(error);

  patch::CPatcherService service(CompiledLauncherConfig(), {platform::FromPath(dir.path() / "runtime"), L"",
                                                            platform::FromPath(dir.path() / "game"), L""});
  ASSERT_TRUE(service.InitializeState(error));
  EXPECT_TRUE(service.VerifyEntryIntegrity(platform::FromPath(target), {relative, 5, Sha256Of("hello")}, error))
      << text::WideToUtf8(error);

  patch::SOrphanScan scan;
  ASSERT_TRUE(service.ScanOrphans(ManifestOf({L"kept.dat"}), patch::kOrphanSampleLimit, scan, error));
  ASSERT_EQ(scan.orphanSample, std::vector<std::wstring>{folders + L"/old.dat"});
  EXPECT_EQ(service.RemoveOrphans(scan.orphanSample).removedFiles, 1u);
  platform::SFileStamp stamp;
  EXPECT_FALSE(platform::ReadFileStamp(platform::FromPath(target), stamp));
}

TEST(OrphanRemoval, TheServiceSparesTheRunningLauncherInTheGameFolder) {
  TempDir dir;
  const fs::path launcher = dir.Write("game/Launcher.EXE", "running");
  const fs::path old = dir.Write("game/old.dat", "old");
  const patch::CPatcherService service(
      CompiledLauncherConfig(),
      {platform::FromPath(dir.path() / "runtime"), L"", platform::FromPath(dir.path() / "game"),
       platform::FromPath(dir.path() / "game" / "sub" / ".." / "Launcher.EXE")});

  patch::SOrphanScan scan;
  std::wstring error;
  ASSERT_TRUE(service.ScanOrphans(ManifestOf({L"bin/a.dat"}), patch::kUnlimitedOrphanSample, scan, error));
  EXPECT_EQ(scan.orphanSample, std::vector<std::wstring>{L"old.dat"});
  EXPECT_EQ(service.RemoveOrphans(scan.orphanSample).removedFiles, 1u);
  EXPECT_FALSE(fs::exists(old));
  EXPECT_TRUE(fs::exists(launcher));
}

}  // namespace
