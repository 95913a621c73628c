#include "tests/support/test_servers.h"

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

#include "tests/support/temp_dir.h"

namespace testing_support {
namespace {

constexpr char kFolder[] = "test_servers";

std::uint16_t ReadPort(const std::string& line, std::string_view key) {
  if (line.rfind(key, 0) != 0 || line.size() <= key.size() || line[key.size()] != '=') return 0;
  return static_cast<std::uint16_t>(std::strtoul(line.c_str() + key.size() + 1, nullptr, 10));
}

std::wstring Widen(std::string_view ascii) { return std::wstring(ascii.begin(), ascii.end()); }

void TrustTestCa(const std::filesystem::path& caPem) {
#ifndef _WIN32
  // libcurl is set up to use OpenSSL's default store, which honours this.
  setenv("SSL_CERT_FILE", caPem.c_str(), 1);
  setenv("NO_PROXY", "127.0.0.1,localhost", 1);
#else
  static_cast<void>(caPem);
#endif
}

}  // namespace

const CTestServers& CTestServers::Get() {
  static const CTestServers servers;
  return servers;
}

CTestServers::CTestServers() : folder_(std::filesystem::absolute(kFolder)), wwwDir_(folder_ / "www") {
  std::ifstream in(folder_ / "servers.txt");
  if (!in) {
    problem_ = "no " + (folder_ / "servers.txt").string() + ": run the tests through ctest, which starts the servers";
    return;
  }
  for (std::string line; std::getline(in, line);) {
    if (const auto port = ReadPort(line, "https_port")) httpsPort_ = port;
    if (const auto port = ReadPort(line, "fault_port")) faultPort_ = port;
  }
  if (!available()) problem_ = "servers.txt lacks a port";
  TrustTestCa(folder_ / "https" / "ca.pem");
}

std::wstring CTestServers::HttpsUrl(std::string_view path) const {
  return L"https://localhost:" + std::to_wstring(httpsPort_) + L"/" + Widen(path);
}

std::wstring CTestServers::FaultUrl(std::string_view pathAndQuery) const {
  return L"http://127.0.0.1:" + std::to_wstring(faultPort_) + L"/" + Widen(pathAndQuery);
}

std::string CTestServers::HttpsAccessLog() const { return ReadFileBytes(folder_ / "https" / "logs" / "access.log"); }

std::string CTestServers::Publish(std::string_view stem, std::string_view bytes, std::string_view extension) const {
  // Test processes run in parallel against the same servers: names must not collide.
  static std::atomic<unsigned> counter{0};
  std::ostringstream name;
  name << stem << "-" << std::random_device{}() << "-" << counter++ << extension;
  const auto file = wwwDir_ / name.str();
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return name.str();
}

std::string PatternBytes(std::size_t size, unsigned seed) {
  std::string bytes(size, '\0');
  std::uint32_t state = seed * 2654435761u + 1;
  for (auto& byte : bytes) {
    state = state * 1664525u + 1013904223u;  // LCG: cheap and never periodic within a test file
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

}  // namespace testing_support
