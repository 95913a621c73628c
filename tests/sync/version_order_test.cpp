#include "patch/version_order.h"

#include <gtest/gtest.h>

namespace {

struct SVersionCase {
  const wchar_t* candidate;
  const wchar_t* current;
  bool newer;
};

TEST(VersionOrder, ComparesDottedVersionsComponentByComponent) {
  const SVersionCase cases[] = {
      {L"1.0.10", L"1.0.5", true},
      {L"1.0.6", L"1.0.5", true},
      {L"2", L"1.9.9.9", true},
      {L"1.0.5.1", L"1.0.5", true},
      {L"999999999", L"1", true},
      {L"1.0.5", L"1.0.5", false},
      {L"1.0.5.0", L"1.0.5", false},
      {L"1.0.5", L"1.0.5.0", false},
      {L"1.0.4", L"1.0.5", false},
      {L"1.0.5", L"1.0.10", false},
      {L"01.0.6", L"1.0.5", true},  // leading zeros are digits like any other
  };
  for (const SVersionCase& c : cases) {
    EXPECT_EQ(patch::IsNewerVersion(c.candidate, c.current), c.newer)
        << testing::PrintToString(c.candidate) << " vs " << testing::PrintToString(c.current);
  }
}

TEST(VersionOrder, AMalformedVersionIsNeverNewer) {
  for (const wchar_t* malformed :
       {L"1.0.x", L"1.0.5.0.1", L"", L"1..6", L".1", L"1.", L"-1", L"+2", L"1.0.6 ", L" 1.0.6", L"1,0,6",
        L"1234567890", L"v1.0.6", L"\x0661.0.6"}) {
    EXPECT_FALSE(patch::IsNewerVersion(malformed, L"1.0.5")) << testing::PrintToString(malformed);
    // Against a malformed current version nothing is newer either.
    EXPECT_FALSE(patch::IsNewerVersion(L"9.9.9", malformed)) << testing::PrintToString(malformed);
  }
}

}  // namespace
