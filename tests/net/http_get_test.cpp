#include <gtest/gtest.h>

#include <algorithm>

#include "net/http_client.h"
#include "tests/net/net_test_support.h"

namespace {

using net::CHttpClient;
using net_tests::AsString;
using net_tests::kRoomyCap;
using testing_support::PatternBytes;

class HttpGet : public net_tests::CServerTest {};

TEST_F(HttpGet, ReadsBodyOverHttpsWithConfiguredUserAgent) {
  const std::string bytes = PatternBytes(300000);
  const std::string name = servers_.Publish("get", bytes);

  const auto result = CHttpClient(config_).Get(servers_.HttpsUrl(name), kRoomyCap);

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
    const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name + "?status=" + std::to_string(status)), kRoomyCap);

    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.status, static_cast<std::uint32_t>(status));
    EXPECT_EQ(result.error, L"HTTP request failed with status " + std::to_wstring(status) + L".");
    EXPECT_EQ(FaultLog(name).size(), 1u) << status;
  }
}

TEST_F(HttpGet, FailedRequestIsRetriedUpToTheAttemptCount) {
  for (const int attempts : {-1, 0, 1, 3}) {
    config_.httpAttempts = attempts;
    const std::string name = servers_.Publish("cut", PatternBytes(200000));

    const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name + "?cut_at=70000"), kRoomyCap);

    EXPECT_FALSE(result.ok);
    EXPECT_TRUE(result.body.empty());
    EXPECT_EQ(FaultLog(name).size(), static_cast<std::size_t>(std::max(attempts, 0))) << attempts;
    // Which of the two depends on where the OS's HTTP stack notices the cut.
    if (attempts > 0) {
      EXPECT_TRUE(result.error == L"Could not read response body." ||
                  result.error == L"Could not query response size.")
          << testing::PrintToString(result.error);
    }
  }
}

// Nothing listens on port 1 of the loopback address.
TEST_F(HttpGet, UnreachableServerFailsWithSystemText) {
  const auto result = CHttpClient(config_).Get(L"http://127.0.0.1:1/file", kRoomyCap);
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.status, 0u);
  EXPECT_FALSE(result.error.empty());
  EXPECT_EQ(result.error.find(L"HTTP request failed"), std::wstring::npos);
}

TEST_F(HttpGet, CompressedBodiesAreDecoded) {
  const std::string bytes = PatternBytes(100000);
  const std::string name = servers_.Publish("coded", bytes);
  for (const char* coding : {"gzip", "deflate"}) {
    const auto result = CHttpClient(config_).Get(servers_.FaultUrl(name + "?encoding=" + coding), kRoomyCap);

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
  const std::string name = servers_.Publish("moved", "moved here");
  const std::wstring hop = servers_.FaultUrl(servers_.Publish("hop", "") + "?redirect=/" + name);
  const auto result = CHttpClient(config_).Get(hop, kRoomyCap);
  EXPECT_EQ(result.status, 200u);
  EXPECT_EQ(AsString(result.body), "moved here");
}

}  // namespace
