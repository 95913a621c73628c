#pragma once
// A patcher service over a temporary runtime and game folder, whose patch
// host is a folder of its own on the test servers' HTTPS host.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "patch/patcher_service.h"
#include "tests/net/net_test_support.h"
#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"

namespace apply_tests {

using testing_support::Sha256Of;

struct SApplyRun {
  bool ok = false;
  std::wstring error;
  patch::SPatchOutcome outcome;
  std::vector<patch::SPatchProgress> reports;
  int mostCallbacksAtOnce = 0;

  bool SawPhase(std::uint32_t phase) const;
};

class CApplyTest : public net_tests::CServerTest {
 protected:
  void SetUp() override;

  // A service with this test's folders and `launcherPath` as the running launcher.
  std::unique_ptr<patch::CPatcherService> MakeService(const std::filesystem::path& launcherPath = {});

  // The entry for `path` with `bytes` as its content; its blob is not published.
  static patch::SManifestEntry EntryFor(const std::string& path, const std::string& bytes);
  // The entry, with its blob published on the host.
  patch::SManifestEntry Publish(const std::string& path, const std::string& bytes);
  // Puts `bytes` where the host keeps the blob of `sha256`, whatever they hash to.
  void PublishBlob(const std::wstring& sha256, const std::string& bytes) const;
  // The blob's address on the host without the leading "/", as access logs show it.
  std::string BlobUrlPath(const std::wstring& sha256) const;

  SApplyRun Apply(const std::vector<patch::SManifestEntry>& files, bool repair = false);
  SApplyRun Apply(patch::CPatcherService& service, const std::vector<patch::SManifestEntry>& files, bool repair);

  std::filesystem::path GamePath(const std::string& path) const;
  void WriteGameFile(const std::string& path, const std::string& bytes) const;
  std::string ReadGameFile(const std::string& path) const;
  std::filesystem::path StagingRoot() const;

  testing_support::TempDir dir_;
  std::string hostFolder_;
  std::unique_ptr<patch::CPatcherService> service_;
};

}  // namespace apply_tests
