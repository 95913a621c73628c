#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "net/http_client.h"
#include "tests/net/net_test_support.h"
#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_servers.h"

namespace {

using net::CHttpClient;
using testing_support::PatternBytes;
using testing_support::ReadFileBytes;
using testing_support::Sha256Of;
using testing_support::TempDir;

using Report = std::pair<std::uint64_t, std::uint64_t>;

class HttpDownload : public net_tests::CServerTest {
 protected:
  net::SDownloadResult Download(const std::wstring& url) {
    return CHttpClient(config_).DownloadFile(url, target_, partial_, [this](std::uint64_t done, std::uint64_t total) {
      reports_.emplace_back(done, total);
    });
  }

  void WritePartial(const std::string& bytes) { dir_.Write("staging/ab/blob.part", bytes); }

  bool RangeRequested(const std::vector<std::string>& log, std::uint64_t offset) const {
    const std::string wanted = "Range: bytes=" + std::to_string(offset) + "-";
    for (const auto& line : log) {
      if (line.find(wanted) != std::string::npos) return true;
    }
    return false;
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
  std::filesystem::permissions(target_, std::filesystem::perms::owner_write | std::filesystem::perms::group_write |
                                            std::filesystem::perms::others_write,
                               std::filesystem::perm_options::remove);

  const auto result = Download(servers_.HttpsUrl(name));

  EXPECT_TRUE(result.ok) << testing::PrintToString(result.error);
  EXPECT_EQ(result.status, 200u);
  EXPECT_EQ(result.error, L"");
  EXPECT_TRUE(ReadFileBytes(target_) == bytes);
  EXPECT_EQ(result.digest, Sha256Of(bytes));
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
    const std::string name = servers_.Publish("progress", bytes);
    std::filesystem::remove(partial_);
    if (c.partial > 0) WritePartial(bytes.substr(0, c.partial));
    reports_.clear();

    const auto result = Download(c.https ? servers_.HttpsUrl(name) : servers_.FaultUrl(name + c.query));

    const std::string label = c.query + " from " + std::to_string(c.partial);
    ASSERT_TRUE(result.ok) << label;
    EXPECT_EQ(result.status, c.partial > 0 ? 206u : 200u) << label;
    EXPECT_TRUE(ReadFileBytes(target_) == bytes) << label;
    EXPECT_EQ(result.digest, Sha256Of(bytes)) << label;
    EXPECT_EQ(RangeRequested(c.https ? HttpsLog(name) : FaultLog(name), c.partial), c.partial > 0) << label;
    ASSERT_GE(reports_.size(), 2u) << label;
    if (c.partial > 0) {
      EXPECT_EQ(reports_.front().first, c.partial) << label;
    }
    for (std::size_t i = 1; i < reports_.size(); ++i) EXPECT_LE(reports_[i - 1].first, reports_[i].first) << label;
    for (const auto& [done, total] : reports_) EXPECT_EQ(total, c.totalKnown ? bytes.size() : done) << label;
    EXPECT_EQ(reports_.back(), Report(bytes.size(), bytes.size())) << label;
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
    const std::string name = servers_.Publish("stale", bytes);
    WritePartial(c.partial);

    const auto result = Download(servers_.FaultUrl(name + c.query));

    EXPECT_TRUE(result.ok) << c.query << c.partial.size();
    EXPECT_EQ(result.status, 200u) << c.query << c.partial.size();
    EXPECT_TRUE(ReadFileBytes(target_) == bytes) << c.query << c.partial.size();
    // Whatever the stale partial held is not part of the digest.
    EXPECT_EQ(result.digest, Sha256Of(bytes)) << c.query << c.partial.size();
    const auto log = FaultLog(name);
    ASSERT_FALSE(log.empty());
    EXPECT_TRUE(RangeRequested({log[0]}, c.partial.size())) << c.query << c.partial.size();
    if (c.startsOverWithoutRange) {
      ASSERT_EQ(log.size(), 2u);
      EXPECT_NE(log[1].find("Range: -"), std::string::npos) << log[1];
    }
  }
}

TEST_F(HttpDownload, RangeNotSatisfiableOnTheLastAttemptLeavesNoPartial) {
  config_.httpAttempts = 1;
  const std::string bytes = PatternBytes(1000, 7);
  const std::string name = servers_.Publish("last416", bytes);
  WritePartial(bytes + "extra");

  const auto result = Download(servers_.HttpsUrl(name));

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
    const std::string name = servers_.Publish("cut", bytes);

    const auto result = Download(servers_.FaultUrl(name + c.query));

    EXPECT_TRUE(result.ok) << c.query << testing::PrintToString(result.error);
    EXPECT_EQ(result.status, 206u) << c.query;
    EXPECT_TRUE(ReadFileBytes(target_) == bytes) << c.query;
    EXPECT_EQ(result.digest, Sha256Of(bytes)) << c.query;
    const auto log = FaultLog(name);
    ASSERT_EQ(log.size(), 2u) << c.query;
    EXPECT_TRUE(RangeRequested({log[1]}, c.offset)) << c.query;
  }
}

TEST_F(HttpDownload, ErrorStatusFailsEveryAttempt) {
  for (const int status : {404, 503}) {
    const std::string name = servers_.Publish("missing", "x");

    const auto result = Download(servers_.FaultUrl(name + "?status=" + std::to_string(status)));

    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.status, static_cast<std::uint32_t>(status));
    EXPECT_EQ(result.error, L"HTTP file download failed with status " + std::to_wstring(status) + L".");
    EXPECT_EQ(FaultLog(name).size(), 3u);
    EXPECT_FALSE(std::filesystem::exists(target_));
  }
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

  EXPECT_EQ(Download(L"not a url").error, L"Could not parse URL.");
}

}  // namespace
