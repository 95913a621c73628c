#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "net/http_client.h"
#include "tests/net/net_test_support.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_servers.h"

namespace {

using net::CHttpClient;
using testing_support::PatternBytes;
using testing_support::ReadFileBytes;
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

TEST_F(HttpDownload, FreshDownloadLargerThanTheBufferOverHttps) {
  const std::string bytes = PatternBytes(5 * 1024 * 1024 + 123);
  const std::string name = servers_.Publish("fresh", bytes);

  const auto result = Download(servers_.HttpsUrl(name));

  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.status, 200u);
  EXPECT_EQ(result.error, L"");
  EXPECT_TRUE(ReadFileBytes(target_) == bytes);
  EXPECT_FALSE(std::filesystem::exists(partial_));
}

TEST_F(HttpDownload, ResumesPartialFileWithRange) {
  const std::string bytes = PatternBytes(700000, 3);
  const std::string name = servers_.Publish("resume", bytes);
  const std::size_t kept = 250001;
  for (const bool https : {true, false}) {
    WritePartial(bytes.substr(0, kept));
    reports_.clear();

    const auto result = Download(https ? servers_.HttpsUrl(name) : servers_.FaultUrl(name));

    EXPECT_TRUE(result.ok) << https;
    EXPECT_EQ(result.status, 206u) << https;
    EXPECT_TRUE(ReadFileBytes(target_) == bytes) << https;
    EXPECT_TRUE(RangeRequested(https ? HttpsLog(name) : FaultLog(name), kept)) << https;
    ASSERT_FALSE(reports_.empty());
    EXPECT_EQ(reports_.front(), Report(kept, bytes.size()));
    EXPECT_EQ(reports_.back(), Report(bytes.size(), bytes.size()));
  }
}

TEST_F(HttpDownload, ProgressCountsUpToTheTotal) {
  const std::string bytes = PatternBytes(300000, 4);
  const std::string name = servers_.Publish("progress", bytes);
  // Without Content-Length the total comes from Content-Range, or is unknown.
  const struct {
    std::string query;
    std::size_t partial;
    bool totalKnown;
  } cases[] = {{"chunk=10000", 0, true}, {"chunk=10000", 120000, true}, {"no_length=1", 120000, true},
               {"no_length=1", 0, false}};
  for (const auto& c : cases) {
    std::filesystem::remove(partial_);
    if (c.partial > 0) WritePartial(bytes.substr(0, c.partial));
    reports_.clear();

    const auto result = Download(servers_.FaultUrl(name + "?" + c.query));

    ASSERT_TRUE(result.ok) << c.query;
    EXPECT_TRUE(ReadFileBytes(target_) == bytes) << c.query;
    ASSERT_GE(reports_.size(), 2u) << c.query;
    if (c.partial > 0) {
      EXPECT_EQ(reports_.front().first, c.partial) << c.query;
    }
    for (std::size_t i = 1; i < reports_.size(); ++i) {
      EXPECT_LE(reports_[i - 1].first, reports_[i].first) << c.query;
    }
    for (const auto& [done, total] : reports_) {
      EXPECT_EQ(total, c.totalKnown ? bytes.size() : done) << c.query;
    }
    EXPECT_EQ(reports_.back(), Report(bytes.size(), bytes.size())) << c.query;
  }
}

TEST_F(HttpDownload, RangeAnsweredWithWholeFileRewritesPartial) {
  const std::string bytes = PatternBytes(200000, 5);
  const std::string name = servers_.Publish("norange", bytes);
  WritePartial(std::string(90000, 'Z'));

  const auto result = Download(servers_.FaultUrl(name + "?ignore_range=1"));

  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.status, 200u);
  EXPECT_TRUE(ReadFileBytes(target_) == bytes);
  EXPECT_TRUE(RangeRequested(FaultLog(name), 90000));
}

TEST_F(HttpDownload, RangeNotSatisfiableDeletesPartialAndStartsOver) {
  const std::string bytes = PatternBytes(100000, 6);
  const std::string name = servers_.Publish("complete", bytes);
  WritePartial(bytes);  // a finished download that was never renamed

  const auto result = Download(servers_.FaultUrl(name));

  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.status, 200u);
  EXPECT_TRUE(ReadFileBytes(target_) == bytes);
  const auto log = FaultLog(name);
  ASSERT_EQ(log.size(), 2u);
  EXPECT_TRUE(RangeRequested({log[0]}, bytes.size()));
  EXPECT_NE(log[1].find("Range: -"), std::string::npos) << log[1];
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

TEST_F(HttpDownload, PartialAtOrBeyondTheTotalIsFetchedAgain) {
  const std::string bytes = PatternBytes(64000, 8);
  const std::string name = servers_.Publish("stale", bytes);
  for (const std::string& stale : {bytes, bytes + "trailing junk"}) {
    WritePartial(stale);

    const auto result = Download(servers_.FaultUrl(name + "?lenient_range=1"));

    EXPECT_TRUE(result.ok) << stale.size();
    EXPECT_EQ(result.status, 200u);
    EXPECT_TRUE(ReadFileBytes(target_) == bytes) << stale.size();
  }
}

TEST_F(HttpDownload, ConnectionCutMidBodyResumesOnTheNextAttempt) {
  const std::string bytes = PatternBytes(400000, 9);
  const std::string name = servers_.Publish("cut", bytes);

  const auto result = Download(servers_.FaultUrl(name + "?cut_at=150000"));

  EXPECT_TRUE(result.ok) << testing::PrintToString(result.error);
  EXPECT_EQ(result.status, 206u);
  EXPECT_TRUE(ReadFileBytes(target_) == bytes);
  const auto log = FaultLog(name);
  ASSERT_EQ(log.size(), 2u);
  EXPECT_TRUE(RangeRequested({log[1]}, 150000));
}

TEST_F(HttpDownload, StalledBodyTimesOutAndResumes) {
  config_.receiveTimeoutMs = 1000;
  const std::string bytes = PatternBytes(80000, 10);
  const std::string name = servers_.Publish("slow", bytes);

  const auto result = Download(servers_.FaultUrl(name + "?stall_at=30000&stall_ms=6000"));

  EXPECT_TRUE(result.ok) << testing::PrintToString(result.error);
  EXPECT_TRUE(ReadFileBytes(target_) == bytes);
  EXPECT_TRUE(RangeRequested(FaultLog(name), 30000));
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

TEST_F(HttpDownload, ReadOnlyTargetIsReplaced) {
  const std::string bytes = PatternBytes(30000, 11);
  const std::string name = servers_.Publish("readonly", bytes);
  dir_.Write("game/data/blob.bin", "old contents");
  std::filesystem::permissions(target_, std::filesystem::perms::owner_write | std::filesystem::perms::group_write |
                                            std::filesystem::perms::others_write,
                               std::filesystem::perm_options::remove);

  const auto result = Download(servers_.HttpsUrl(name));

  EXPECT_TRUE(result.ok) << testing::PrintToString(result.error);
  EXPECT_TRUE(ReadFileBytes(target_) == bytes);
}

TEST_F(HttpDownload, TargetThatCannotBeReplacedFailsToFinalize) {
  const std::string name = servers_.Publish("blocked", PatternBytes(1000, 12));
  dir_.Write("game/data/blob.bin/inside.txt", "a folder stands where the file goes");

  const auto result = Download(servers_.FaultUrl(name));

  const std::wstring prefix = L"Could not finalize downloaded file: ";
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.error.rfind(prefix, 0), 0u) << testing::PrintToString(result.error);
  EXPECT_GT(result.error.size(), prefix.size());
}

TEST_F(HttpDownload, UnopenablePartialEndsTheDownload) {
  const std::string name = servers_.Publish("noopen", PatternBytes(1000, 13));
  dir_.Write("staging/ab/blob.part/inside.txt", "a folder stands where the partial file goes");

  const auto result = Download(servers_.FaultUrl(name));

  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.error, L"Could not open target file.");
  EXPECT_EQ(FaultLog(name).size(), 1u);
}

TEST_F(HttpDownload, BadUrlFails) {
  const auto result = Download(L"not a url");

  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.status, 0u);
  EXPECT_EQ(result.error, L"Could not parse URL.");
}

}  // namespace
