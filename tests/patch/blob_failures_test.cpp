#include "patch/blob_failures.h"

#include <gtest/gtest.h>

namespace {

using patch::CBlobFailureTable;
using patch::ERetryVerdict;

const std::wstring kBlob = L"3fa9000000000000000000000000000000000000000000000000000000000000";

TEST(BlobFailures, UnknownBlobIsAllowed) {
  CBlobFailureTable table;
  EXPECT_EQ(table.Consult(kBlob, 0), ERetryVerdict::Allowed);
}

TEST(BlobFailures, FirstFailureWaitsExactlyFiveSeconds) {
  CBlobFailureTable table;
  table.RecordFailure(kBlob, false, 1000);
  EXPECT_EQ(table.Consult(kBlob, 1000 + 4999), ERetryVerdict::Waiting);
  EXPECT_EQ(table.Consult(kBlob, 1000 + 5000), ERetryVerdict::Allowed);
}

TEST(BlobFailures, BackoffDoublesUpToFiveMinutes) {
  CBlobFailureTable table;
  const std::uint64_t expected[] = {5000, 10000, 20000, 40000, 80000, 160000, 300000, 300000, 300000};
  std::uint64_t now = 0;
  for (std::uint64_t wait : expected) {
    table.RecordFailure(kBlob, false, now);
    EXPECT_EQ(table.Consult(kBlob, now + wait - 1), ERetryVerdict::Waiting) << "wait " << wait;
    EXPECT_EQ(table.Consult(kBlob, now + wait), ERetryVerdict::Allowed) << "wait " << wait;
    now += wait;
  }
}

TEST(BlobFailures, MismatchIsRefusedAndStopsCountingTransferFailures) {
  CBlobFailureTable table;
  table.RecordFailure(kBlob, true, 0);
  table.RecordFailure(kBlob, false, 0);
  table.RecordFailure(kBlob, false, 0);
  EXPECT_EQ(table.Consult(kBlob, 1'000'000'000), ERetryVerdict::Refused);
  // Transfer failures after the mismatch set no back-off: once the mismatch is
  // forgotten by a success, a fresh failure starts again at five seconds.
  table.RecordSuccess(kBlob);
  table.RecordFailure(kBlob, false, 0);
  EXPECT_EQ(table.Consult(kBlob, 5000), ERetryVerdict::Allowed);
}

TEST(BlobFailures, FirstFailureIsReportedOnceUntilForgotten) {
  CBlobFailureTable table;
  EXPECT_TRUE(table.RecordFailure(kBlob, false, 0));
  EXPECT_FALSE(table.RecordFailure(kBlob, false, 0));
  EXPECT_FALSE(table.RecordFailure(kBlob, true, 0));
  EXPECT_TRUE(table.RecordFailure(L"other", false, 0));

  table.RecordSuccess(kBlob);
  EXPECT_EQ(table.Consult(kBlob, 0), ERetryVerdict::Allowed);
  EXPECT_TRUE(table.RecordFailure(kBlob, false, 0));

  table.Clear();
  EXPECT_EQ(table.Consult(kBlob, 0), ERetryVerdict::Allowed);
  EXPECT_TRUE(table.RecordFailure(kBlob, true, 0));
}

}  // namespace
