#include "tests/net/net_test_support.h"

#include <chrono>
#include <sstream>
#include <thread>

namespace net_tests {
namespace {

std::vector<std::string> Lines(const std::string& text, const std::string& mustContain) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.find(mustContain) != std::string::npos) lines.push_back(line);
  }
  return lines;
}

}  // namespace

void CServerTest::SetUp() {
  ASSERT_TRUE(servers_.available()) << servers_.problem();
  config_.userAgent = L"LauncherTest/7.1";
}

std::vector<std::string> CServerTest::FaultLog(const std::string& name) const {
  // A client of its own, so the log is read however the test configured config_.
  const LauncherConfig plain;
  const auto log = net::CHttpClient(plain).Get(servers_.FaultUrl("__log/" + name));
  EXPECT_TRUE(log.ok) << "reading the fault server's log: " << testing::PrintToString(log.error);
  return Lines(AsString(log.body), "GET /" + name);
}

std::vector<std::string> CServerTest::HttpsLog(const std::string& name) const {
  std::vector<std::string> lines;
  for (int tries = 0; tries < 40 && lines.empty(); ++tries) {
    if (tries > 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    lines = Lines(servers_.HttpsAccessLog(), "/" + name);
  }
  return lines;
}

std::string AsString(const std::vector<std::uint8_t>& bytes) { return std::string(bytes.begin(), bytes.end()); }

}  // namespace net_tests
