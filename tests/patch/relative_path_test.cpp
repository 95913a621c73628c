#include "patch/relative_path.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

namespace {

using patch::ValidateRelativePath;

// Windows rules on every platform, so both builds must agree on every row;
// nullopt: refused.
const std::pair<std::wstring, std::optional<std::wstring>> kPathCases[] = {
    {L"x", L"x"},
    {L"a/./b", L"a/b"},
    {L"a\\b", L"a/b"},
    {L"a//b", L"a/b"},
    {L"x/../y", L"y"},
    {L"a/b/../../c", L"c"},
    {L"...", L"..."},
    {L"\u00fc/\u0645.txt", L"\u00fc/\u0645.txt"},
    {L"", std::nullopt},
    {L".", std::nullopt},
    {L"a/..", std::nullopt},
    {L"..", std::nullopt},
    {L"../x", std::nullopt},
    {L"a/../../x", std::nullopt},
    {L"/x", std::nullopt},
    {L"C:x", std::nullopt},
    {L"C:/x", std::nullopt},
    {L"C:/../x", std::nullopt},
    {L"\\\\server\\share\\x", std::nullopt},
    {L"\\\\?\\C:\\x", std::nullopt},
    // A drive that only appears after collapsing.
    {L"./C:x", std::nullopt},
    {L"a/../C:/x", std::nullopt},
    // Folder forms: they never name a file.
    {L"a/", std::nullopt},
    {L"a/.", std::nullopt},
    // The OS would cut the path at the NUL.
    {std::wstring(L"a\0/../../x", 10), std::nullopt},
};

TEST(RelativePath, TableOfPaths) {
  for (const auto& [input, expected] : kPathCases) {
    std::wstring normalised = L"stale";
    EXPECT_EQ(ValidateRelativePath(input, normalised), expected.has_value()) << testing::PrintToString(input);
    EXPECT_EQ(normalised, expected.value_or(L"")) << testing::PrintToString(input);
  }
}

}  // namespace
