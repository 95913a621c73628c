#pragma once
// Shared set-up of the tests that talk to the test servers.

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "app/launcher_config.h"
#include "net/http_client.h"
#include "tests/support/test_servers.h"

namespace net_tests {

// More than any body these tests read.
inline constexpr std::size_t kRoomyCap = 64 * 1024 * 1024;

inline std::string AsString(const std::vector<std::uint8_t>& bytes) { return std::string(bytes.begin(), bytes.end()); }

inline std::vector<std::string> LinesContaining(const std::string& text, const std::string& wanted) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.find(wanted) != std::string::npos) lines.push_back(line);
  }
  return lines;
}

class CServerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(servers_.available()) << servers_.problem();
    config_.userAgent = L"LauncherTest/7.1";
  }

  // Requests the fault server saw for /<name>, one line each (see tools/fault_server).
  std::vector<std::string> FaultLog(const std::string& name) const {
    // A client of its own, so the log is read however the test configured config_.
    const auto log = net::CHttpClient(LauncherConfig{}).Get(servers_.FaultUrl("__log/" + name), kRoomyCap);
    EXPECT_TRUE(log.ok) << "reading the fault server's log: " << testing::PrintToString(log.error);
    return LinesContaining(AsString(log.body), "GET /" + name);
  }

  // nginx access log lines that mention /<name>; waits briefly for the first
  // one, since nginx may log a request just after the client has its bytes.
  std::vector<std::string> HttpsLog(const std::string& name) const {
    std::vector<std::string> lines;
    for (int tries = 0; tries < 40 && lines.empty(); ++tries) {
      if (tries > 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
      lines = LinesContaining(servers_.HttpsAccessLog(), "/" + name);
    }
    return lines;
  }

  const testing_support::CTestServers& servers_ = testing_support::CTestServers::Get();
  LauncherConfig config_;
};

}  // namespace net_tests
