#include <gtest/gtest.h>

#include "patch/patch_progress.h"

namespace {

TEST(PatchSummaryText, SingularPluralReasonAndClosingSentence) {
  struct SCase {
    std::uint64_t applied;
    std::uint64_t failed;
    const wchar_t* reason;
    const wchar_t* expected;
  };
  const SCase cases[] = {
      {5, 0, L"", L""},
      {2, 1, L"the published update is incomplete",
       L"1 file could not be updated: data/a.bin (the published update is incomplete). The rest of the update was "
       L"applied."},
      {0, 1, L"waiting before retrying", L"1 file could not be updated: data/a.bin (waiting before retrying)."},
      {1, 12, L"x", L"12 files could not be updated, starting with data/a.bin (x). The rest of the update was applied."},
      {0, 2, L"", L"2 files could not be updated, starting with data/a.bin."},
  };
  for (const SCase& c : cases) {
    patch::SPatchOutcome outcome;
    outcome.appliedCount = c.applied;
    outcome.failedCount = c.failed;
    outcome.firstFailedPath = L"data/a.bin";
    outcome.firstFailedReason = c.reason;
    EXPECT_EQ(patch::PatchSummaryText(outcome), c.expected);
  }
}

}  // namespace
