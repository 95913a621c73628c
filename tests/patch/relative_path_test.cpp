#include "patch/relative_path.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using patch::ValidateRelativePath;

struct SPathCase {
  std::wstring input;
  std::optional<std::wstring> normalised;  // nullopt: refused
};

// Windows rules on every platform, so both builds must agree on every row.
const SPathCase kPathCases[] = {
    // Plain and normalised forms.
    {L"x", L"x"},
    {L"data/pack/a.bin", L"data/pack/a.bin"},
    {L"a/./b", L"a/b"},
    {L"a\\b", L"a/b"},
    {L"a//b", L"a/b"},
    {L"x/../y", L"y"},
    {L"a/b/../../c", L"c"},
    {L"...", L"..."},
    {L"\u00fc/\u0645.txt", L"\u00fc/\u0645.txt"},
    // Empty, or nothing usable left.
    {L"", std::nullopt},
    {L".", std::nullopt},
    {L"a/..", std::nullopt},
    {L"a/b/../..", std::nullopt},
    // Climbing out of the game folder.
    {L"..", std::nullopt},
    {L"../x", std::nullopt},
    {L"a/../../x", std::nullopt},
    {L"../../x", std::nullopt},
    // Root directories and root names.
    {L"/x", std::nullopt},
    {L"C:x", std::nullopt},
    {L"C:/x", std::nullopt},
    {L"C:", std::nullopt},
    {L"C:/../x", std::nullopt},
    {L"\\\\server\\share\\x", std::nullopt},
    {L"\\\\?\\C:\\x", std::nullopt},
    // A drive that only appears after collapsing.
    {L"./C:x", std::nullopt},
    {L"a/../C:/x", std::nullopt},
    // Folder forms: they never name a file.
    {L"a/", std::nullopt},
    {L"a/.", std::nullopt},
    {L"a/b/..", std::nullopt},
    // The OS would cut the path at the NUL.
    {std::wstring(L"a\0/../../x", 10), std::nullopt},
};

TEST(RelativePath, TableOfPaths) {
  for (const SPathCase& c : kPathCases) {
    std::wstring normalised = L"stale";
    const bool accepted = ValidateRelativePath(c.input, normalised);
    EXPECT_EQ(accepted, c.normalised.has_value()) << "input: " << testing::PrintToString(c.input);
    EXPECT_EQ(normalised, c.normalised.value_or(L"")) << "input: " << testing::PrintToString(c.input);
  }
}

}  // namespace
