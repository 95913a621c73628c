#include <gtest/gtest.h>

#include <string>

#include "net/http_client.h"
#include "tests/net/net_test_support.h"
#include "tests/support/test_servers.h"

namespace {

using net::CHttpClient;
using net_tests::AsString;
using testing_support::PatternBytes;

class HttpGet : public net_tests::CServerTest {};

TEST_F(HttpGet, ReadsBodyOverHttpsWithConfiguredUserAgent) {
  const std::string bytes = PatternBytes(300000);
  const std::string name = servers_.Publish("get", bytes);

  const auto result = CHttpClient(config_).Get(servers_.HttpsUrl(name));

  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.status, 200u);
  EXPECT_EQ(result.error, L"");
  EXPECT_TRUE(AsString(result.body) == bytes);
  const auto log = HttpsLog(name);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_NE(log[0].find("User-Agent: LauncherTest/7.1"), std::string::npos) << log[0];
}

TEST_F(HttpGet, AnsweredErrorStatusIsNotRetried) {
  for (const int status : {404, 503, 416}) {
    const std::string name = servers_.Publish("status", "x");
    const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name + "?status=" + std::to_string(status)));

    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.status, static_cast<std::uint32_t>(status));
    EXPECT_EQ(result.error, L"HTTP request failed with status " + std::to_wstring(status) + L".");
    EXPECT_EQ(FaultLog(name).size(), 1u) << status;
  }
}

TEST_F(HttpGet, FailedRequestIsRetriedUpToTheAttemptCount) {
  for (const int attempts : {1, 2, 3}) {
    config_.httpAttempts = attempts;
    const std::string name = servers_.Publish("cut", PatternBytes(200000));

    const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name + "?cut_at=70000"));

    EXPECT_FALSE(result.ok);
    EXPECT_TRUE(result.body.empty());
    // Which of the two depends on where the OS's HTTP stack notices the cut.
    EXPECT_TRUE(result.error == L"Could not read response body." || result.error == L"Could not query response size.")
        << testing::PrintToString(result.error);
    EXPECT_EQ(FaultLog(name).size(), static_cast<std::size_t>(attempts));
  }
}

TEST_F(HttpGet, NoAttemptBelowOne) {
  for (const int attempts : {0, -1}) {
    config_.httpAttempts = attempts;
    const std::string name = servers_.Publish("none", "x");

    const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name));

    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.status, 0u);
    EXPECT_TRUE(FaultLog(name).empty());
  }
}

TEST_F(HttpGet, UnreachableServerFailsWithSystemText) {
  config_.httpAttempts = 2;
  // Port 1 on the loopback address: nothing listens there, so the connection is refused.
  const auto result = CHttpClient(config_).Get(L"http://127.0.0.1:1/file");

  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.status, 0u);
  EXPECT_FALSE(result.error.empty());
  EXPECT_EQ(result.error.find(L"HTTP request failed"), std::wstring::npos);
}

TEST_F(HttpGet, BadUrlFailsWithoutRequest) {
  const auto result = CHttpClient(config_).Get(L"ftp://127.0.0.1/file");

  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.status, 0u);
  EXPECT_EQ(result.error, L"Could not parse URL.");
}

TEST_F(HttpGet, UrlWithoutPathRequestsRoot) {
  CHttpClient(config_).Get(L"http://127.0.0.1:" + std::to_wstring(servers_.faultPort()));

  const auto log = FaultLog("");
  ASSERT_FALSE(log.empty());
  EXPECT_EQ(log[0].rfind("GET / |", 0), 0u) << log[0];
}

// A server compresses only what the request accepts; WinHTTP builds that
// cannot decode (Wine, Windows before 8.1) accept nothing and get plain bodies.
TEST_F(HttpGet, GzipFromNginxIsDecoded) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "line " + std::to_string(i % 37) + " of a patch note\n";
  const std::string name = servers_.Publish("note", text, ".txt");

  const auto result = CHttpClient(config_).Get(servers_.HttpsUrl(name));

  EXPECT_TRUE(result.ok);
  EXPECT_TRUE(AsString(result.body) == text);
  const auto log = HttpsLog(name);
  ASSERT_EQ(log.size(), 1u);
  if (log[0].find("Accept-Encoding: gzip") == std::string::npos) GTEST_SKIP() << "no gzip accepted: " << log[0];
  EXPECT_NE(log[0].find("Content-Encoding: gzip"), std::string::npos) << log[0];
}

TEST_F(HttpGet, CompressedBodiesAreDecoded) {
  const std::string bytes = PatternBytes(100000);
  const std::string name = servers_.Publish("coded", bytes);
  for (const char* coding : {"gzip", "deflate"}) {
    const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name + "?encoding=" + coding));

    EXPECT_TRUE(result.ok) << coding;
    EXPECT_TRUE(AsString(result.body) == bytes) << coding;
  }
  const auto log = FaultLog(name);
  ASSERT_EQ(log.size(), 2u);
  if (log[0].find("Accept-Encoding: gzip, deflate") == std::string::npos) {
    GTEST_SKIP() << "no compression accepted: " << log[0];
  }
}

TEST_F(HttpGet, FollowsRedirect) {
  const std::string bytes = PatternBytes(5000);
  const std::string name = servers_.Publish("moved", bytes);
  const std::string hop = servers_.Publish("hop", "");

  const auto result = CHttpClient(config_).Get(servers_.FaultUrl(hop + "?redirect=/" + name));

  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.status, 200u);
  EXPECT_TRUE(AsString(result.body) == bytes);
}

TEST_F(HttpGet, StalledBodyRunsIntoTheReceiveTimeout) {
  config_.receiveTimeoutMs = 1000;
  config_.httpAttempts = 1;
  const std::string name = servers_.Publish("stall", PatternBytes(50000));

  const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name + "?stall_at=1000&stall_ms=5000"));

  EXPECT_FALSE(result.ok);
  EXPECT_FALSE(result.error.empty());
}

}  // namespace
