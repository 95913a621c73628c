#include "tests/apply/apply_test_support.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <random>

#include "net/http_client.h"
#include "patch/blob_path.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace apply_tests {

namespace fs = std::filesystem;

bool SApplyRun::SawPhase(std::uint32_t phase) const {
  return std::any_of(reports.begin(), reports.end(), [&](const auto& report) { return report.phase == phase; });
}

void CApplyTest::SetUp() {
  CServerTest::SetUp();
  hostFolder_ = "apply-" + std::to_string(std::random_device{}());
  config_.patchHost = servers_.HttpsUrl(hostFolder_);
  service_ = MakeService();
}

std::unique_ptr<patch::CPatcherService> CApplyTest::MakeService(const fs::path& launcherPath) {
  auto service = std::make_unique<patch::CPatcherService>(
      config_, patch::SServiceFolders{platform::FromPath(dir_.path() / "runtime"), L"",
                                      platform::FromPath(dir_.path() / "game"), platform::FromPath(launcherPath)});
  std::wstring error;
  EXPECT_TRUE(service->InitializeState(error)) << text::WideToUtf8(error);
  return service;
}

patch::SManifestEntry CApplyTest::EntryFor(const std::string& path, const std::string& bytes) {
  return {text::Utf8ToWide(path), bytes.size(), Sha256Of(bytes)};
}

patch::SManifestEntry CApplyTest::Publish(const std::string& path, const std::string& bytes) {
  const patch::SManifestEntry entry = EntryFor(path, bytes);
  PublishBlob(entry.sha256, bytes);
  return entry;
}

void CApplyTest::PublishBlob(const std::wstring& sha256, const std::string& bytes) const {
  const fs::path file = servers_.wwwDir() / platform::ToPath(text::Utf8ToWide(BlobUrlPath(sha256)));
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string CApplyTest::BlobUrlPath(const std::wstring& sha256) const {
  return hostFolder_ + "/" + text::WideToUtf8(patch::BlobPathForHash(sha256));
}

SApplyRun CApplyTest::Apply(const std::vector<patch::SManifestEntry>& files, bool repair) {
  return Apply(*service_, files, repair);
}

SApplyRun CApplyTest::Apply(patch::CPatcherService& service, const std::vector<patch::SManifestEntry>& files,
                            bool repair) {
  patch::SManifest manifest;
  manifest.version = 1;
  manifest.channel = L"stable";
  manifest.files = files;
  SApplyRun run;
  std::atomic<int> inside{0};
  const patch::CPatcherService::ProgressCallback progress = [&](const patch::SPatchProgress& report) {
    const int now = ++inside;
    run.mostCallbacksAtOnce = std::max(run.mostCallbacksAtOnce, now);
    run.reports.push_back(report);
    --inside;
  };
  run.ok = service.ApplyEntries(net::CHttpClient(config_), manifest, repair, progress, run.outcome, run.error);
  return run;
}

fs::path CApplyTest::GamePath(const std::string& path) const {
  return dir_.path() / "game" / platform::ToPath(text::Utf8ToWide(path));
}

void CApplyTest::WriteGameFile(const std::string& path, const std::string& bytes) const {
  dir_.Write("game/" + path, bytes);
}

std::string CApplyTest::ReadGameFile(const std::string& path) const {
  return testing_support::ReadFileBytes(GamePath(path));
}

fs::path CApplyTest::StagingRoot() const { return dir_.path() / "runtime" / "staging"; }

}  // namespace apply_tests
