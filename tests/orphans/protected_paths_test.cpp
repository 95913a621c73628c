#include "patch/protected_paths.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/orphans/orphan_test_support.h"

namespace {

using namespace orphan_tests;

// Case and separator change the spelling of a path, never its meaning.
std::vector<std::wstring> Spellings(std::wstring_view path) {
  return {std::wstring(path), Upper(path), Capitalised(path), Backslashed(path), Backslashed(Upper(path))};
}

void ExpectProtection(std::wstring_view path, bool expected) {
  for (const std::wstring& spelling : Spellings(path)) {
    EXPECT_EQ(patch::IsProtectedPath(spelling), expected) << std::string(spelling.begin(), spelling.end());
  }
}

TEST(ProtectedPaths, FoldersProtectTheirWholeTreeOnlyAtTheTop) {
  for (std::wstring_view folder : kFolders) {
    const std::wstring name(folder);
    ExpectProtection(name + L"readme.txt", true);
    ExpectProtection(name + L"deep/er/shot.jpg", true);
    ExpectProtection(L"pack/" + name + L"readme.txt", false);
    ExpectProtection(name.substr(0, name.size() - 1) + L"x/readme.txt", false);
  }
}

TEST(ProtectedPaths, FileNamesMatchWholeNamesAnywhere) {
  for (std::wstring_view fileName : kFileNames) {
    const std::wstring name(fileName);
    ExpectProtection(name, true);
    ExpectProtection(L"sub/dir/" + name, true);
    ExpectProtection(L"sub/" + name + L"~", false);
    ExpectProtection(L"sub/" + name + L"/readme.txt", false);
  }
}

TEST(ProtectedPaths, NamePrefixesApplyToTheFileNameOnly) {
  for (std::wstring_view prefix : kNamePrefixes) {
    const std::wstring name(prefix);
    ExpectProtection(name + L"_2024.txt", true);
    ExpectProtection(L"logs/" + name + L"1.txt", true);
    ExpectProtection(L"logs/x" + name + L".txt", false);
    ExpectProtection(L"old" + name + L"/readme.txt", false);
  }
}

TEST(ProtectedPaths, SuffixesEndTheWholePath) {
  for (std::wstring_view suffix : kSuffixes) {
    const std::wstring name(suffix);
    ExpectProtection(L"bin/readme.txt" + name, true);
    ExpectProtection(L"a" + name, true);
    ExpectProtection(L"a" + name + L"x", false);
    ExpectProtection(L"a" + name + L"/readme.txt", false);
  }
}

TEST(ProtectedPaths, OrdinaryGamePaths) {
  struct SCase {
    const wchar_t* path;
    bool isProtected;
  };
  const SCase cases[] = {
      {L"", true},
      {L"Screenshots/Shot1.JPG", true},
      {L"pack/screenshots/a.jpg", false},
      {L"maps/town/syserr_2024.txt", true},
      {L"logs/chatlog1.txt", true},
      {L"bin/readme.txt.part", true},
      {L"data/anything", true},
      {L"vardeni2.exe", false},
  };
  for (const SCase& c : cases) ExpectProtection(c.path, c.isProtected);
}

}  // namespace
