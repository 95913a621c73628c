#include "patch/orphan_scan.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
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

// Every protected row is written too, in upper case, and must never be reported.
// Letter case means the same on both systems, for non-ASCII names too: a listed
// "ÄVENTURE/ÖL.dat" is the file "äventure/öl.dat", and the unlisted "ÜN.dat" is
// reported, and removed, under its folded name.
TEST(OrphanScan, ReportsUnlistedUnprotectedFilesOnlyUnderNamesThatRemoveThem) {
  TempDir dir;
  for (std::wstring_view folder : kFolders) dir.Write(text::WideToUtf8(Upper(folder) + L"Inner/File.dat"), "user");
  for (std::wstring_view name : kFileNames) dir.Write(text::WideToUtf8(L"Sub/" + Upper(name)), "user");
  for (std::wstring_view prefix : kNamePrefixes) dir.Write(text::WideToUtf8(L"D/" + Upper(prefix) + L"_7.txt"), "user");
  for (std::wstring_view suffix : kSuffixes) dir.Write(text::WideToUtf8(L"Sub/Name" + Upper(suffix)), "user");
  dir.Write("bin/game.dat", "listed");
  dir.Write("Maps/Town.MAP", "listed in another case");
  dir.Write("a/b.txt", "listed as a/./b.txt");
  const auto listed = dir.Write("\xC3\xA4venture/\xC3\xB6l.dat", "listed in another case");
  dir.Write("Launcher.exe", "the running launcher");
  const std::vector<std::filesystem::path> orphans = {dir.Write("Sub/old/Patch1.DAT", "12345"),
                                                      dir.Write("readme_old.txt", "abc"),
                                                      dir.Write("\xC3\xA4venture/\xC3\x9CN.dat", "x")};
  const auto manifest =
      ManifestOf({L"bin/game.dat", L"maps\\town.map", L"a/./b.txt", L"\u00C4VENTURE/\u00D6L.dat", L"not/on/disk.dat"});

  const patch::SOrphanScan scan = Scan(dir.wide(), manifest, patch::kOrphanSampleLimit, L"LAUNCHER.EXE");
  EXPECT_EQ(scan.orphanFiles, 3u);
  EXPECT_EQ(scan.orphanBytes, 9u);
  ASSERT_EQ(scan.orphanSample,
            (std::vector<std::wstring>{L"readme_old.txt", L"sub/old/patch1.dat", L"\u00E4venture/\u00FCn.dat"}));
  EXPECT_EQ(patch::RemoveOrphans(dir.wide(), scan.orphanSample).removedFiles, 3u);
  for (const auto& orphan : orphans) EXPECT_FALSE(std::filesystem::exists(orphan)) << orphan;
  EXPECT_TRUE(std::filesystem::exists(listed));
}

// Names in mixed case and with "_", which sorts after the capitals and before
// the small letters, so no OS lists them in the walk's order by chance (Windows
// lists upper-cased names in order). The walk's order is then the order of the
// whole paths: the counting form's sample is the first fifty of the full list.
TEST(OrphanScan, CountingFormSamplesTheFirstFiftyFullFormListsAll) {
  TempDir dir;
  std::set<std::wstring> orphans;
  for (int i = 0; i < 120; ++i) {
    const std::string name = (i % 2 ? "ile" : "_file") + std::to_string(i) + ".dat";
    dir.Write("old/" + std::string(1, "AbCdEfG"[i % 7]) + (i % 2 ? "/F" : "/") + name, std::string(i, 'x'));
    orphans.insert(text::Utf8ToWide("old/" + std::string(1, "abcdefg"[i % 7]) + (i % 2 ? "/f" : "/") + name));
  }
  const patch::SOrphanScan full = Scan(dir.wide(), ManifestOf({L"kept.dat"}));
  ASSERT_EQ(full.orphanSample, std::vector<std::wstring>(orphans.begin(), orphans.end()));

  const patch::SOrphanScan counting = Scan(dir.wide(), ManifestOf({L"kept.dat"}), patch::kOrphanSampleLimit);
  EXPECT_EQ(counting.orphanFiles, 120u);
  EXPECT_EQ(counting.orphanBytes, 119u * 120u / 2);
  EXPECT_EQ(counting.orphanSample, std::vector<std::wstring>(orphans.begin(), std::next(orphans.begin(), 50)));
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
