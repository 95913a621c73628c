#include "patch/protected_paths.h"

#include <gtest/gtest.h>

#include <span>
#include <vector>

#include "tests/orphans/orphan_test_support.h"

namespace {

using namespace orphan_tests;

// Case and separator change the spelling of a path, never its meaning.
void ExpectProtection(std::wstring_view path, bool expected) {
  for (const std::wstring& spelling : {std::wstring(path), Upper(path), Backslashed(path), Backslashed(Upper(path))}) {
    EXPECT_EQ(patch::IsProtectedPath(spelling), expected) << std::string(spelling.begin(), spelling.end());
  }
}

// "%" stands for the listed name, "#" for the name without its last character.
std::wstring Fill(std::wstring_view pattern, std::wstring_view name) {
  std::wstring path;
  for (wchar_t unit : pattern) {
    if (unit == L'%') path += name;
    else if (unit == L'#') path += name.substr(0, name.size() - 1);
    else path += unit;
  }
  return path;
}

TEST(ProtectedPaths, EachRuleProtectsItsShapeOnly) {
  struct SRule {
    std::span<const std::wstring_view> names;
    std::vector<std::wstring_view> covered;
    std::vector<std::wstring_view> notCovered;
  };
  const SRule rules[] = {
      // Folders protect their whole tree, and only at the top.
      {kFolders, {L"%readme.txt", L"%deep/er/shot.jpg"}, {L"pack/%readme.txt", L"#x/readme.txt"}},
      // File names match whole names anywhere.
      {kFileNames, {L"%", L"sub/dir/%"}, {L"sub/%~", L"sub/%/readme.txt"}},
      // Prefixes apply to the file name only.
      {kNamePrefixes, {L"%_2024.txt", L"logs/%1.txt"}, {L"logs/x%.txt", L"old%/readme.txt"}},
      // Suffixes end the whole path.
      {kSuffixes, {L"bin/readme.txt%", L"a%"}, {L"a%x", L"a%/readme.txt"}},
  };
  for (const SRule& rule : rules) {
    for (std::wstring_view name : rule.names) {
      for (std::wstring_view pattern : rule.covered) ExpectProtection(Fill(pattern, name), true);
      for (std::wstring_view pattern : rule.notCovered) ExpectProtection(Fill(pattern, name), false);
    }
  }
  ExpectProtection(L"", true);
  ExpectProtection(L"vardeni2.exe", false);
}

}  // namespace
