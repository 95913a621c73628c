#include <gtest/gtest.h>

#include "net/http_client.h"
#include "tests/net/net_test_support.h"

namespace {

class HttpGetCurl : public net_tests::CServerTest {};

// The test CA reaches OpenSSL through SSL_CERT_FILE alone: without it the same
// request must fail certificate verification.
TEST_F(HttpGetCurl, UsesHttp2AndTrustsOnlyTheConfiguredCa) {
  const std::string name = servers_.Publish("h2", "two");
  EXPECT_TRUE(net::CHttpClient(config_).Get(servers_.HttpsUrl(name), net_tests::kRoomyCap).ok);
  const auto log = HttpsLog(name);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_NE(log[0].find("HTTP/2.0"), std::string::npos) << log[0];

  const std::string saved = getenv("SSL_CERT_FILE") ? getenv("SSL_CERT_FILE") : "";
  setenv("SSL_CERT_FILE", "/nonexistent-test-ca.pem", 1);
  config_.httpAttempts = 1;
  const auto refused = net::CHttpClient(config_).Get(servers_.HttpsUrl(name), net_tests::kRoomyCap);
  setenv("SSL_CERT_FILE", saved.c_str(), 1);
  EXPECT_FALSE(refused.ok);
  EXPECT_EQ(refused.status, 0u);
}

}  // namespace
