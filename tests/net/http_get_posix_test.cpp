#include <gtest/gtest.h>

#include "net/http_client.h"
#include "tests/net/net_test_support.h"

namespace {

class HttpGetCurl : public net_tests::CServerTest {};

TEST_F(HttpGetCurl, UsesHttp2WhereTlsOffersIt) {
  const std::string name = servers_.Publish("h2", "two");

  const auto result = net::CHttpClient(config_).Get(servers_.HttpsUrl(name));

  EXPECT_TRUE(result.ok);
  const auto log = HttpsLog(name);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_NE(log[0].find("HTTP/2.0"), std::string::npos) << log[0];
}

TEST_F(HttpGetCurl, RefusesCertificateOfUnknownCa) {
  // The test CA reaches OpenSSL through SSL_CERT_FILE alone; without it the
  // same request must fail certificate verification.
  const std::string name = servers_.Publish("trust", "x");
  const char* previous = getenv("SSL_CERT_FILE");
  const std::string saved = previous ? previous : "";
  setenv("SSL_CERT_FILE", "/nonexistent-test-ca.pem", 1);
  config_.httpAttempts = 1;

  const auto result = net::CHttpClient(config_).Get(servers_.HttpsUrl(name));

  setenv("SSL_CERT_FILE", saved.c_str(), 1);
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.status, 0u);
  EXPECT_TRUE(net::CHttpClient(config_).Get(servers_.HttpsUrl(name)).ok);
}

}  // namespace
