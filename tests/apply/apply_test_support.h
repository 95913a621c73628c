#pragma once
// A patcher service over a temporary runtime and game folder, whose patch
// host is a folder of its own on the test servers' HTTPS host.

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "net/http_client.h"
#include "patch/blob_path.h"
#include "patch/patcher_service.h"
#include "platform/path_text.h"
#include "tests/net/net_test_support.h"
#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace apply_tests {

using testing_support::Sha256Of;

struct SApplyRun {
  bool ok = false;
  std::wstring error;
  patch::SPatchOutcome outcome;
  std::vector<patch::SPatchProgress> reports;
  int mostCallbacksAtOnce = 0;

  bool SawPhase(std::uint32_t phase) const {
    return std::any_of(reports.begin(), reports.end(), [&](const auto& report) { return report.phase == phase; });
  }
};

class CApplyTest : public net_tests::CServerTest {
 protected:
  void SetUp() override {
    CServerTest::SetUp();
    hostFolder_ = "apply-" + std::to_string(std::random_device{}());
    config_.patchHost = servers_.HttpsUrl(hostFolder_);
    service_ = MakeService();
  }

  // A service with this test's folders and `launcherPath` as the running launcher.
  std::unique_ptr<patch::CPatcherService> MakeService(const std::filesystem::path& launcherPath = {}) {
    auto service = std::make_unique<patch::CPatcherService>(
        config_, patch::SServiceFolders{platform::FromPath(dir_.path() / "runtime"), L"",
                                        platform::FromPath(dir_.path() / "game"), platform::FromPath(launcherPath)});
    std::wstring error;
    EXPECT_TRUE(service->InitializeState(error)) << text::WideToUtf8(error);
    return service;
  }

  // The entry for `path` with `bytes` as its content; its blob is not published.
  static patch::SManifestEntry EntryFor(const std::string& path, const std::string& bytes) {
    return {text::Utf8ToWide(path), bytes.size(), Sha256Of(bytes)};
  }

  // The entry, with its blob published on the host.
  patch::SManifestEntry Publish(const std::string& path, const std::string& bytes) const {
    const patch::SManifestEntry entry = EntryFor(path, bytes);
    PublishBlob(entry.sha256, bytes);
    return entry;
  }

  // Puts `bytes` where the host keeps the blob of `sha256`, whatever they hash to.
  void PublishBlob(const std::wstring& sha256, const std::string& bytes) const {
    const std::filesystem::path file = servers_.wwwDir() / platform::ToPath(text::Utf8ToWide(BlobUrlPath(sha256)));
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  // The blob's address on the host without the leading "/", as access logs show it.
  std::string BlobUrlPath(const std::wstring& sha256) const {
    return hostFolder_ + "/" + text::WideToUtf8(patch::BlobPathForHash(sha256));
  }

  // Every report is kept in the result.
  SApplyRun Apply(patch::CPatcherService& service, const std::vector<patch::SManifestEntry>& files, bool repair) {
    patch::SManifest manifest;
    manifest.version = 1;
    manifest.channel = L"stable";
    manifest.files = files;
    SApplyRun run;
    std::atomic<int> inside{0};
    const auto progress = [&](const patch::SPatchProgress& report) {
      run.mostCallbacksAtOnce = std::max(run.mostCallbacksAtOnce, ++inside);
      run.reports.push_back(report);
      --inside;
    };
    run.ok = service.ApplyEntries(net::CHttpClient(config_), manifest, repair, progress, run.outcome, run.error);
    return run;
  }
  SApplyRun Apply(const std::vector<patch::SManifestEntry>& files, bool repair = false) {
    return Apply(*service_, files, repair);
  }

  std::filesystem::path GamePath(const std::string& path) const {
    return dir_.path() / "game" / platform::ToPath(text::Utf8ToWide(path));
  }
  void WriteGameFile(const std::string& path, const std::string& bytes) const { dir_.Write("game/" + path, bytes); }
  std::string ReadGameFile(const std::string& path) const { return testing_support::ReadFileBytes(GamePath(path)); }
  std::filesystem::path StagingRoot() const { return dir_.path() / "runtime" / "staging"; }

  testing_support::TempDir dir_;
  std::string hostFolder_;
  std::unique_ptr<patch::CPatcherService> service_;
};

}  // namespace apply_tests
