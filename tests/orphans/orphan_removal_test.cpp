#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "patch/orphan_scan.h"
#include "platform/path_text.h"
#include "tests/orphans/orphan_test_support.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

namespace fs = std::filesystem;
using namespace orphan_tests;
using testing_support::TempDir;

// Also past the old 260-character path limit, which Windows needs \\?\ paths for.
TEST(OrphanRemoval, RemovesWhatTheFullScanListedAndCountsIt) {
  TempDir dir;
  std::string deep = "deep";
  while (deep.size() < 300) deep += "/folder_of_a_deep_tree";
  const std::vector<fs::path> removed = {dir.Write("game/" + deep + "/old.dat", "1234"),
                                         dir.Write("game/Old/Patch1.DAT", "123456"),
                                         dir.Write("game/readme.txt", "ab"), dir.Write("game/Sub2/File.DAT", "xyz")};
  const fs::path kept = dir.Write("game/kept.dat", "listed");
  const fs::path shot = dir.Write("game/screenshots/s.jpg", "protected");
  const std::wstring game = platform::FromPath(dir.path() / "game");

  patch::SOrphanScan scan;
  std::wstring error;
  ASSERT_TRUE(patch::ScanOrphans(game, ManifestOf({L"kept.dat", L"sub2/file.dat"}), patch::kUnlimitedOrphanSample,
                                 L"", scan, error));
  ASSERT_EQ(scan.orphanSample,
            (std::vector<std::wstring>{text::Utf8ToWide(deep + "/old.dat"), L"old/patch1.dat", L"readme.txt"}));
  std::vector<std::wstring> orphans = scan.orphanSample;
  orphans.push_back(L"SUB2\\file.dat");  // any case, either separator
  orphans.push_back(L"gone.dat");

  const patch::SOrphanRemoval removal = patch::RemoveOrphans(game, orphans);
  EXPECT_EQ(removal.removedFiles, 4u);
  EXPECT_EQ(removal.removedBytes, 15u);
  EXPECT_EQ(removal.failedFiles, 1u);
  for (const fs::path& file : removed) EXPECT_FALSE(fs::exists(file)) << file.string();
  EXPECT_TRUE(fs::exists(kept));
  EXPECT_TRUE(fs::exists(shot));
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
  // A folder passes the text rules, yet removal deletes files only.
  EXPECT_EQ(patch::RemoveOrphans(game, {L"sub"}).failedFiles, 1u);
  for (const fs::path& file : files) EXPECT_TRUE(fs::exists(file)) << file.string();
  // Dots inside a name are ordinary.
  for (const wchar_t* path : {L"Old\\Patch1.DAT", L"a..b/c.dat", L"..hidden/x.dat", L"x/...dat"}) {
    EXPECT_TRUE(patch::IsRemovableOrphanPath(path)) << text::WideToUtf8(path);
  }
}

}  // namespace
