#pragma once
// The servers a CTest fixture started for this test run (test_servers.cmake):
// nginx over HTTPS with a throwaway CA and the fault-injection server, both
// serving the files written below WwwDir(). Tests find them through
// "test_servers/servers.txt" in their working folder.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace testing_support {

class CTestServers {
 public:
  // Loaded once per process. On Linux this also points OpenSSL at the test CA
  // (SSL_CERT_FILE); on Windows the fixture has put it in the user's Root store.
  static const CTestServers& Get();

  bool available() const { return httpsPort_ != 0 && faultPort_ != 0; }
  const std::string& problem() const { return problem_; }

  // "https://localhost:<port>/" + path.
  std::wstring HttpsUrl(std::string_view path) const;
  // "http://127.0.0.1:<port>/" + path (with any query that asks for a fault).
  std::wstring FaultUrl(std::string_view pathAndQuery) const;
  std::uint16_t faultPort() const { return faultPort_; }

  const std::filesystem::path& wwwDir() const { return wwwDir_; }
  // nginx's access log, one line per request (see https_host.sh).
  std::string HttpsAccessLog() const;

  // Writes `bytes` to a new file below wwwDir() named after `stem` and ending
  // in `extension`; returns its URL path.
  std::string Publish(std::string_view stem, std::string_view bytes, std::string_view extension = "") const;

 private:
  CTestServers();

  std::filesystem::path folder_;
  std::filesystem::path wwwDir_;
  std::uint16_t httpsPort_ = 0;
  std::uint16_t faultPort_ = 0;
  std::string problem_;
};

// Deterministic, non-repeating test bytes.
std::string PatternBytes(std::size_t size, unsigned seed = 1);

}  // namespace testing_support
