#pragma once
// Shared set-up of the tests that talk to the test servers.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/launcher_config.h"
#include "net/http_client.h"
#include "tests/support/test_servers.h"

namespace net_tests {

class CServerTest : public ::testing::Test {
 protected:
  void SetUp() override;

  // Requests the fault server saw for /<name>, one line each (see tools/fault_server).
  std::vector<std::string> FaultLog(const std::string& name) const;
  // nginx access log lines that mention /<name>; waits briefly for the first
  // one, since nginx may log a request just after the client has its bytes.
  std::vector<std::string> HttpsLog(const std::string& name) const;

  const testing_support::CTestServers& servers_ = testing_support::CTestServers::Get();
  LauncherConfig config_;
};

std::string AsString(const std::vector<std::uint8_t>& bytes);

}  // namespace net_tests
