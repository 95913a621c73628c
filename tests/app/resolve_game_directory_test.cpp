#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

#include "app/paths.h"
#include "platform/path_text.h"

namespace {

namespace fs = std::filesystem;
using platform::FromPath;
using platform::ToPath;

constexpr const wchar_t* kExe = L"vardeni2.exe";

// The test install sits on drive D: on Windows and under "/" on Linux.
std::wstring Under(std::initializer_list<const wchar_t*> parts) {
  fs::path path = ToPath(fs::path::preferred_separator == '\\' ? L"D:\\" : L"/");
  for (const wchar_t* part : parts) path /= ToPath(part);
  return FromPath(path);
}

// A file system holding exactly the listed paths, remembering what was asked.
struct FakeFileSystem {
  std::set<std::wstring> existing;
  std::vector<std::wstring> queries;

  FileExistsFunction Exists() {
    return [this](const std::wstring& path) {
      queries.push_back(path);
      return existing.contains(path);
    };
  }
};

TEST(ResolveGameDirectoryTest, SearchesTheModuleFolderAndThreeAncestors) {
  const std::wstring launcher = Under({L"Games", L"Vardeni", L"launcher"});
  const std::wstring besideLauncher = Under({L"Games", L"Vardeni", L"launcher", L"app"});
  const std::wstring deep = Under({L"a", L"b", L"c", L"d", L"launcher"});
  const struct {
    const char* name;
    std::wstring moduleFolder;
    std::set<std::wstring> existing;
    std::wstring expected;
  } cases[] = {
      {"nothing exists: first candidate", launcher, {}, besideLauncher},
      {"app beside the launcher is chosen even without the executable",
       launcher,
       {besideLauncher, Under({L"Games", L"Vardeni", L"app"}), Under({L"Games", L"Vardeni", L"app", kExe})},
       besideLauncher},
      {"game folder next to the launcher folder",
       launcher,
       {Under({L"Games", L"Vardeni", L"app"}), Under({L"Games", L"Vardeni", L"app", kExe})},
       Under({L"Games", L"Vardeni", L"app"})},
      {"trailing separators on the module folder are not a level",
       launcher + std::wstring(2, static_cast<wchar_t>(fs::path::preferred_separator)),
       {Under({L"app", kExe})},
       Under({L"app"})},
      {"an ancestor's folder without the executable is passed over",
       launcher,
       {Under({L"Games", L"Vardeni", L"app"}), Under({L"Games", L"app", kExe})},
       Under({L"Games", L"app"})},
      {"nearest ancestor wins",
       launcher,
       {Under({L"Games", L"Vardeni", L"app", kExe}), Under({L"Games", L"app", kExe}), Under({L"app", kExe})},
       Under({L"Games", L"Vardeni", L"app"})},
      {"another executable does not qualify", launcher, {Under({L"Games", L"app", L"other.exe"})}, besideLauncher},
      {"no fourth ancestor", deep, {Under({L"a", L"app", kExe})}, Under({L"a", L"b", L"c", L"d", L"launcher", L"app"})},
      {"third ancestor of a deep module folder", deep, {Under({L"a", L"b", L"app", kExe})}, Under({L"a", L"b", L"app"})},
      {"module folder at the root", Under({}), {}, Under({L"app"})},
  };
  for (const auto& c : cases) {
    FakeFileSystem files{c.existing, {}};
    EXPECT_EQ(ResolveGameDirectory(L"app", c.moduleFolder, kExe, files.Exists()), c.expected) << c.name;
  }
}

TEST(ResolveGameDirectoryTest, AbsoluteTextsAreTakenAsTheyAre) {
  // Windows forms count on Linux too: a setting written for Windows is never glued under the module folder.
  const std::wstring absolute[] = {
      L"E:\\Games\\app", L"e:/games/app", L"D:app", L"\\\\server\\share\\app", L"//server/share/app",
  };
  for (const std::wstring& text : absolute) {
    FakeFileSystem files;
    EXPECT_EQ(ResolveGameDirectory(text, Under({L"Games", L"launcher"}), kExe, files.Exists()), text);
    EXPECT_TRUE(files.queries.empty()) << text;
  }
}

}  // namespace
