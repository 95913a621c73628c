#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "net/http_client.h"
#include "tests/net/net_test_support.h"
#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"

namespace {

using net::CHttpClient;
using testing_support::PatternBytes;
using testing_support::ReadFileBytes;
using testing_support::Sha256Of;
using testing_support::TempDir;

using Report = std::pair<std::uint64_t, std::uint64_t>;

bool RangeRequested(const std::vector<std::string>& log, std::uint64_t offset) {
  const std::string wanted = "Range: bytes=" + std::to_string(offset) + "-";
  return std::any_of(log.begin(), log.end(), [&](const auto& line) { return line.find(wanted) != std::string::npos; });
}

class HttpDownload : public net_tests::CServerTest {
 protected:
  net::SDownloadResult Download(const std::wstring& url) {
    return CHttpClient(config_).DownloadFile(url, target_, partial_, net_tests::kRoomyCap,
                                             [this](std::uint64_t done, std::uint64_t total) {
                                               reports_.emplace_back(done, total);
                                             });
  }

  void WritePartial(const std::string& bytes) { dir_.Write("staging/ab/blob.part", bytes); }

  // The whole of `bytes` landed on the target and is what the digest covers.
  void ExpectTargetHolds(const std::string& bytes, const net::SDownloadResult& result) const {
    EXPECT_TRUE(result.ok) << testing::PrintToString(result.error);
    EXPECT_TRUE(ReadFileBytes(target_) == bytes);
    EXPECT_EQ(result.digest, Sha256Of(bytes));
  }

  TempDir dir_;
  std::filesystem::path target_ = dir_.path() / "game" / "data" / "blob.bin";
  std::filesystem::path partial_ = dir_.path() / "staging" / "ab" / "blob.part";
  std::vector<Report> reports_;
};

// Larger than the copy buffer, and over a read-only file left by an old install.
TEST_F(HttpDownload, FreshDownloadReplacesAReadOnlyTarget) {
  const std::string bytes = PatternBytes(5 * 1024 * 1024 + 123);
  const std::string name = servers_.Publish("fresh", bytes);
  dir_.Write("game/data/blob.bin", "old contents");
  std::filesystem::permissions(target_, std::filesystem::perms::owner_read);

  const auto result = Download(servers_.HttpsUrl(name));

  ExpectTargetHolds(bytes, result);
  EXPECT_EQ(result.status, 200u);
  EXPECT_EQ(result.error, L"");
  EXPECT_FALSE(std::filesystem::exists(partial_));
}

// Without Content-Length the total comes from Content-Range, or is unknown.
TEST_F(HttpDownload, ResumesWithRangeAndCountsProgressUpToTheTotal) {
  const std::string bytes = PatternBytes(300000, 4);
  const struct {
    bool https;
    std::string query;
    std::size_t partial;
    bool totalKnown;
  } cases[] = {{true, "", 250001, true},
               {false, "?chunk=10000", 0, true},
               {false, "?chunk=10000", 120000, true},
               {false, "?no_length=1", 120000, true},
               {false, "?no_length=1", 0, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.query + " from " + std::to_string(c.partial));
    const std::string name = servers_.Publish("progress", bytes);
    std::filesystem::remove(partial_);
    if (c.partial > 0) WritePartial(bytes.substr(0, c.partial));
    reports_.clear();

    const auto result = Download(c.https ? servers_.HttpsUrl(name) : servers_.FaultUrl(name + c.query));

    ExpectTargetHolds(bytes, result);
    EXPECT_EQ(result.status, c.partial > 0 ? 206u : 200u);
    EXPECT_EQ(RangeRequested(c.https ? HttpsLog(name) : FaultLog(name), c.partial), c.partial > 0);
    ASSERT_GE(reports_.size(), 2u);
    if (c.partial > 0) {
      EXPECT_EQ(reports_.front().first, c.partial);
    }
    for (std::size_t i = 1; i < reports_.size(); ++i) EXPECT_LE(reports_[i - 1].first, reports_[i].first);
    for (const auto& [done, total] : reports_) EXPECT_EQ(total, c.totalKnown ? bytes.size() : done);
    EXPECT_EQ(reports_.back(), Report(bytes.size(), bytes.size()));
  }
}

// A 200 to the range, a 416 for a finished partial that was never renamed, and
// a server that answers a range at or past the end: the whole file again.
TEST_F(HttpDownload, PartialTheServerCannotResumeIsFetchedAgain) {
  const std::string bytes = PatternBytes(200000, 5);
  const struct {
    std::string partial;
    std::string query;
    bool startsOverWithoutRange;
  } cases[] = {{std::string(90000, 'Z'), "?ignore_range=1", false},
               {bytes, "", true},
               {bytes, "?lenient_range=1", false},
               {bytes + "trailing junk", "?lenient_range=1", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.query + " from " + std::to_string(c.partial.size()));
    const std::string name = servers_.Publish("stale", bytes);
    WritePartial(c.partial);

    const auto result = Download(servers_.FaultUrl(name + c.query));

    // Whatever the stale partial held is not part of the digest.
    ExpectTargetHolds(bytes, result);
    EXPECT_EQ(result.status, 200u);
    const auto log = FaultLog(name);
    ASSERT_FALSE(log.empty());
    EXPECT_TRUE(RangeRequested({log[0]}, c.partial.size()));
    if (c.startsOverWithoutRange) {
      ASSERT_EQ(log.size(), 2u);
      EXPECT_NE(log[1].find("Range: -"), std::string::npos) << log[1];
    }
  }
}

TEST_F(HttpDownload, RangeNotSatisfiableOnTheLastAttemptLeavesNoPartial) {
  config_.httpAttempts = 1;
  const std::string bytes = PatternBytes(1000, 7);
  WritePartial(bytes + "extra");

  const auto result = Download(servers_.HttpsUrl(servers_.Publish("last416", bytes)));

  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.status, 416u);
  EXPECT_FALSE(std::filesystem::exists(partial_));
  EXPECT_FALSE(std::filesystem::exists(target_));
}

TEST_F(HttpDownload, CutOrStalledBodyResumesOnTheNextAttempt) {
  config_.receiveTimeoutMs = 1000;
  const std::string bytes = PatternBytes(400000, 9);
  const struct {
    std::string query;
    std::uint64_t offset;
  } cases[] = {{"?cut_at=150000", 150000}, {"?stall_at=30000&stall_ms=6000", 30000}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.query);
    const std::string name = servers_.Publish("cut", bytes);

    const auto result = Download(servers_.FaultUrl(name + c.query));

    ExpectTargetHolds(bytes, result);
    EXPECT_EQ(result.status, 206u);
    const auto log = FaultLog(name);
    ASSERT_EQ(log.size(), 2u);
    EXPECT_TRUE(RangeRequested({log[1]}, c.offset));
  }
}

// 400 bytes a second for 10 s, never idle; what arrived is kept for resuming.
TEST_F(HttpDownload, TrickleBelowTheMinimumRateTimesOutAsAnIdleBodyDoes) {
  config_.httpAttempts = 1;
  config_.receiveTimeoutMs = config_.minimumBodyRateWindowMs = 1000;
  const std::string name = servers_.Publish("trickle", PatternBytes(4000, 13));
  const auto trickled = Download(servers_.FaultUrl(name + "?chunk=100&trickle_ms=250"));
  EXPECT_FALSE(trickled.ok);
  EXPECT_LT(ReadFileBytes(partial_).size(), 4000u);
  std::filesystem::remove(partial_);
  EXPECT_EQ(trickled.error, Download(servers_.FaultUrl(name + "?stall_at=100&stall_ms=3000")).error);
}

// A folder standing where the partial or the target file goes.
TEST_F(HttpDownload, BlockedFilesEndTheDownloadWithTheirSentence) {
  const std::string name = servers_.Publish("blocked", PatternBytes(1000, 12));
  dir_.Write("staging/ab/blob.part/inside.txt", "x");
  EXPECT_EQ(Download(servers_.FaultUrl(name)).error, L"Could not open target file.");
  EXPECT_EQ(FaultLog(name).size(), 1u);

  std::filesystem::remove_all(partial_);
  dir_.Write("game/data/blob.bin/inside.txt", "x");
  const std::wstring error = Download(servers_.FaultUrl(name)).error;
  const std::wstring prefix = L"Could not finalize downloaded file: ";
  EXPECT_EQ(error.rfind(prefix, 0), 0u) << testing::PrintToString(error);
  EXPECT_GT(error.size(), prefix.size());
}

}  // namespace

// A range is read only from a 206 answer and never past its end; a transfer
// cut mid-way resumes from the first byte not yet handed over.
TEST_F(HttpDownload, FetchRangeResumesACutRangeAndRefusesAnythingButThatRange) {
  const std::string bytes = PatternBytes(300000, 5);
  const std::string name = servers_.Publish("ranged", bytes);
  const struct {
    const char* query;
    bool served;
    std::size_t requests;
  } cases[] = {{"", true, 1}, {"?cut_at=150000", true, 2}, {"?ignore_range=1", false, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.query);
    const std::size_t before = FaultLog(name).size();
    std::string received;
    const net::SRangeResult result = CHttpClient(config_).FetchRange(
        servers_.FaultUrl(name + c.query), 100000, 100000, [&](std::span<const std::uint8_t> piece) {
          received.append(piece.begin(), piece.end());
          return true;
        });
    EXPECT_EQ(result.ok, c.served);
    EXPECT_EQ(result.notServed, !c.served);
    EXPECT_EQ(FaultLog(name).size() - before, c.requests);
    EXPECT_TRUE(received == (c.served ? bytes.substr(100000, 100000) : ""));
  }
  EXPECT_TRUE(RangeRequested(FaultLog(name), 150000));
}
