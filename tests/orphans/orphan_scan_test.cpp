#include "patch/orphan_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tests/orphans/orphan_test_support.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

using namespace orphan_tests;
using testing_support::TempDir;

patch::SOrphanScan Scan(const std::wstring& folder, const patch::SManifest& manifest,
                        std::size_t sampleLimit = patch::kUnlimitedOrphanSample, std::wstring_view excluded = L"") {
  patch::SOrphanScan scan;
  std::wstring error = L"stale";
  EXPECT_TRUE(patch::ScanOrphans(folder, manifest, sampleLimit, excluded, scan, error));
  EXPECT_EQ(error, L"");
  return scan;
}

TEST(OrphanScan, ReportsUnlistedFilesOnly) {
  TempDir dir;
  dir.Write("bin/game.dat", "listed");
  dir.Write("Maps/Town.MAP", "listed in another case");
  dir.Write("a/b.txt", "listed as a/./b.txt");
  dir.Write("\xC3\xA4venture/\xC3\xB6l.dat", "listed");
  dir.Write("Launcher.exe", "the running launcher");
  dir.Write("screenshots/shot.jpg", "protected");
  dir.Write("old/Patch1.DAT", "12345");
  dir.Write("readme_old.txt", "abc");
  dir.Write("\xC3\xA4venture/\xC3\xBCn.dat", "x");
  const auto manifest = ManifestOf(
      {L"bin/game.dat", L"maps\\town.map", L"a/./b.txt", L"\u00E4venture/\u00F6l.dat", L"not/on/disk.dat"});

  const patch::SOrphanScan scan = Scan(dir.wide(), manifest, patch::kOrphanSampleLimit, L"LAUNCHER.EXE");
  EXPECT_EQ(scan.orphanFiles, 3u);
  EXPECT_EQ(scan.orphanBytes, 9u);
  EXPECT_EQ(scan.orphanSample,
            (std::vector<std::wstring>{L"old/patch1.dat", L"readme_old.txt", L"\u00E4venture/\u00FCn.dat"}));
}

TEST(OrphanScan, NeverReportsAProtectedFile) {
  TempDir dir;
  std::vector<std::wstring> protectedFiles;
  for (std::wstring_view folder : kFolders) protectedFiles.push_back(Capitalised(folder) + L"Inner/File.dat");
  for (std::wstring_view name : kFileNames) protectedFiles.push_back(L"Sub/" + Upper(name));
  for (std::wstring_view prefix : kNamePrefixes) protectedFiles.push_back(L"Deep/Er/" + Upper(prefix) + L"_7.txt");
  for (std::wstring_view suffix : kSuffixes) protectedFiles.push_back(L"Misc/Name" + Upper(suffix));
  for (const std::wstring& file : protectedFiles) dir.Write(text::WideToUtf8(file), "user data");
  dir.Write("Sub/unlisted.dat", "x");  // proves the walk went through the same folders

  const patch::SOrphanScan scan = Scan(dir.wide(), ManifestOf({L"game.dat"}));
  EXPECT_EQ(scan.orphanSample, std::vector<std::wstring>{L"sub/unlisted.dat"});
}

TEST(OrphanScan, CountingFormSamplesFiftyFullFormListsAll) {
  TempDir dir;
  std::set<std::wstring> orphans;
  std::uint64_t bytes = 0;
  for (int i = 0; i < 120; ++i) {
    const std::string folder = "old/" + std::to_string(i % 7) + "/";
    dir.Write(folder + "File" + std::to_string(i) + ".dat", std::string(i, 'x'));
    orphans.insert(text::Utf8ToWide(folder + "file" + std::to_string(i) + ".dat"));
    bytes += i;
  }
  const auto manifest = ManifestOf({L"kept.dat"});

  const patch::SOrphanScan counting = Scan(dir.wide(), manifest, patch::kOrphanSampleLimit);
  EXPECT_EQ(counting.orphanFiles, 120u);
  EXPECT_EQ(counting.orphanBytes, bytes);
  ASSERT_EQ(counting.orphanSample.size(), 50u);
  EXPECT_TRUE(std::is_sorted(counting.orphanSample.begin(), counting.orphanSample.end()));
  for (const std::wstring& path : counting.orphanSample) EXPECT_TRUE(orphans.contains(path));

  const patch::SOrphanScan full = Scan(dir.wide(), manifest);
  EXPECT_EQ(full.orphanFiles, 120u);
  EXPECT_EQ(full.orphanSample, std::vector<std::wstring>(orphans.begin(), orphans.end()));
}

TEST(OrphanScan, MissingOrEmptyFolderHasNoOrphans) {
  TempDir dir;
  for (const std::wstring& folder : {dir.wide(), dir.wide() + L"/missing", std::wstring()}) {
    const patch::SOrphanScan scan = Scan(folder, ManifestOf({L"game.dat"}));
    EXPECT_EQ(scan.orphanFiles + scan.orphanBytes + scan.orphanSample.size(), 0u);
  }
}

TEST(OrphanScan, FailsWhenNoListedPathIsUsable) {
  TempDir dir;
  dir.Write("orphan.dat", "x");
  for (const patch::SManifest& manifest :
       {ManifestOf({}), ManifestOf({L"../up.dat", L"C:/abs.dat", L"/root.dat", L"a/..", L""})}) {
    patch::SOrphanScan scan;
    scan.orphanFiles = 9;
    std::wstring error;
    EXPECT_FALSE(patch::ScanOrphans(dir.wide(), manifest, patch::kOrphanSampleLimit, L"", scan, error));
    EXPECT_EQ(error, L"The update list contains no usable files.");
    EXPECT_EQ(scan.orphanFiles, 0u);
  }
}

}  // namespace
