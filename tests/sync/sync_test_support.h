#pragma once
// A patch host per test (its own folder on the test servers' nginx), a signed
// release published there, and a patcher service over temporary runtime and
// game folders.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/launcher_config.h"
#include "net/http_client.h"
#include "patch/patcher_service.h"
#include "tests/crypto/signing_support.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_servers.h"

namespace sync_tests {

struct SGameFile {
  std::string path;
  std::string bytes;
};

struct SRelease {
  std::uint64_t version = 42;
  std::string channel = "stable";
  std::vector<SGameFile> files;
  // A launcher record is written when the version is not empty.
  std::string launcherVersion;
  std::string launcherBytes;   // published as its blob
  std::string launcherSha256;  // empty: the SHA-256 of launcherBytes
};

// Computed by libsodium, not by the code under test.
std::string Sha256Hex(std::string_view bytes);

// The game executable and two data files.
std::vector<SGameFile> SampleGameFiles();

class CSyncTest : public ::testing::Test {
 protected:
  CSyncTest();
  void SetUp() override;

  // Publishes the list, its signature and the blobs of the files and the
  // launcher, then the pointer naming the release. Returns the list's bytes.
  std::string PublishRelease(const SRelease& release, std::string_view pointerFile = "pointer.txt") const;
  void PublishFile(std::string_view relative, std::string_view bytes) const;
  void RemovePublishedFile(std::string_view relative) const;
  // "blobs/" + the first two digits + "/" + the digest.
  static std::string BlobPath(const std::string& sha256);
  void WriteGameFiles(const std::vector<SGameFile>& files) const;

  // A started service over this test's folders, as a new launcher run would have it.
  std::unique_ptr<patch::CPatcherService> NewService() const;
  // SyncPatchState, expected to succeed or fail; a failure's text is the view's.
  patch::SPatchView Sync(patch::CPatcherService& service, bool maintenance = false, bool synced = true);

  // Requests nginx logged for this test's host folder whose line contains
  // `needle`; waits briefly for at least `atLeast` of them.
  std::vector<std::string> HostRequests(std::string_view needle, std::size_t atLeast = 1) const;

  std::string RuntimeFile(std::string_view name) const;

  const testing_support::CTestServers& servers_ = testing_support::CTestServers::Get();
  std::string hostFolder_;
  signing_support::SKeyPair key_;
  LauncherConfig config_;
  testing_support::TempDir runtime_;
  testing_support::TempDir game_;
  std::wstring launcherPath_;
  net::CHttpClient http_{config_};
};

}  // namespace sync_tests
