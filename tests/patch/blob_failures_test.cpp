#include "patch/blob_failures.h"

#include <gtest/gtest.h>

namespace {

using patch::CBlobFailureTable;
using patch::ERetryVerdict;

const std::wstring kBlob = L"3fa9000000000000000000000000000000000000000000000000000000000000";

TEST(BlobFailures, BackoffStartsAtFiveSecondsAndDoublesUpToFiveMinutes) {
  CBlobFailureTable table;
  EXPECT_EQ(table.Consult(kBlob, 0), ERetryVerdict::Allowed);
  std::uint64_t now = 1000;
  for (std::uint64_t wait : {5000, 10000, 20000, 40000, 80000, 160000, 300000, 300000}) {
    table.RecordFailure(kBlob, false, now);
    EXPECT_EQ(table.Consult(kBlob, now + wait - 1), ERetryVerdict::Waiting) << "wait " << wait;
    EXPECT_EQ(table.Consult(kBlob, now + wait), ERetryVerdict::Allowed) << "wait " << wait;
    now += wait;
  }
}

TEST(BlobFailures, MismatchIsRefusedUntilForgottenAndFirstFailureIsReportedOnce) {
  CBlobFailureTable table;
  EXPECT_TRUE(table.RecordFailure(kBlob, true, 0));
  EXPECT_FALSE(table.RecordFailure(kBlob, false, 0));
  EXPECT_FALSE(table.RecordFailure(kBlob, false, 0));
  EXPECT_TRUE(table.RecordFailure(L"other", false, 0));
  EXPECT_EQ(table.Consult(kBlob, 1'000'000'000), ERetryVerdict::Refused);
  // Transfer failures after the mismatch set no back-off: once a success forgets
  // the blob, a fresh failure starts again at five seconds.
  table.RecordSuccess(kBlob);
  EXPECT_TRUE(table.RecordFailure(kBlob, false, 0));
  EXPECT_EQ(table.Consult(kBlob, 5000), ERetryVerdict::Allowed);

  table.Clear();
  EXPECT_EQ(table.Consult(L"other", 0), ERetryVerdict::Allowed);
  EXPECT_TRUE(table.RecordFailure(kBlob, true, 0));
}

}  // namespace
