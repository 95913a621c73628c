#include "tests/sync/sync_test_support.h"

#include <sodium.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "platform/path_text.h"

namespace sync_tests {
namespace {

std::filesystem::path Utf8Path(std::string_view relative) {
  return std::filesystem::path(std::u8string(relative.begin(), relative.end()));
}

std::string Quoted(std::string_view text) {
  std::string quoted(1, '"');
  quoted += text;
  return quoted += '"';
}

std::string LauncherDigest(const SRelease& release) {
  return release.launcherSha256.empty() ? Sha256Hex(release.launcherBytes) : release.launcherSha256;
}

std::string ListText(const SRelease& release) {
  std::string list = "{\"schema\":1,\"version\":" + std::to_string(release.version) +
                     ",\"channel\":" + Quoted(release.channel) + ",\"generatedAt\":\"2026-11-01T10:00:00Z\"";
  if (!release.launcherVersion.empty()) {
    list += ",\"launcher\":{\"productVersion\":" + Quoted(release.launcherVersion) +
            ",\"size\":" + std::to_string(release.launcherBytes.size()) +
            ",\"sha256\":" + Quoted(LauncherDigest(release)) + "}";
  }
  list += ",\"files\":[";
  for (std::size_t i = 0; i < release.files.size(); ++i) {
    if (i > 0) list += ",";
    const SGameFile& file = release.files[i];
    list += "{\"path\":" + Quoted(file.path) + ",\"size\":" + std::to_string(file.bytes.size()) +
            ",\"sha256\":" + Quoted(Sha256Hex(file.bytes)) + "}";
  }
  return list + "]}";
}

std::string UniqueHostFolder() {
  static std::atomic<unsigned> counter{0};
  std::ostringstream name;
  name << "sync-" << std::random_device{}() << "-" << counter++;
  return name.str();
}

}  // namespace

std::string Sha256Hex(std::string_view bytes) {
  unsigned char digest[crypto_hash_sha256_BYTES];
  crypto_hash_sha256(digest, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  char hex[crypto_hash_sha256_BYTES * 2 + 1];
  sodium_bin2hex(hex, sizeof(hex), digest, sizeof(digest));
  return hex;
}

std::vector<SGameFile> SampleGameFiles() {
  return {{"vardeni2.exe", testing_support::PatternBytes(3000, 1)},
          {"data/world.pak", testing_support::PatternBytes(5000, 2)},
          {"bin/sound.dll", testing_support::PatternBytes(700, 3)}};
}

CSyncTest::CSyncTest() : hostFolder_(UniqueHostFolder()) {
  config_.patchHost = servers_.HttpsUrl(hostFolder_);
  config_.publicKeys[0] = key_.publicKey;
  launcherPath_ = platform::FromPath(game_.path() / "Old Launcher" / "VardeniLauncher.exe");
}

void CSyncTest::SetUp() { ASSERT_TRUE(servers_.available()) << servers_.problem(); }

std::string CSyncTest::PublishRelease(const SRelease& release, std::string_view pointerFile) const {
  const std::string list = ListText(release);
  const std::string stem = "patchlist.v" + std::to_string(release.version);
  PublishFile(stem + ".json", list);
  PublishFile(stem + ".sig", signing_support::Base64Of(key_.Sign(list)) + "\n");
  for (const SGameFile& file : release.files) PublishFile(BlobPath(Sha256Hex(file.bytes)), file.bytes);
  if (!release.launcherVersion.empty()) {
    // Published under the listed digest, whatever its bytes.
    PublishFile(BlobPath(LauncherDigest(release)), release.launcherBytes);
  }
  PublishFile(pointerFile, std::to_string(release.version) + "\n");
  return list;
}

void CSyncTest::PublishFile(std::string_view relative, std::string_view bytes) const {
  const auto file = servers_.wwwDir() / hostFolder_ / Utf8Path(relative);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string CSyncTest::BlobPath(const std::string& sha256) {
  std::string path = "blobs/";
  path.append(sha256, 0, 2).append("/").append(sha256);
  return path;
}

void CSyncTest::RemovePublishedFile(std::string_view relative) const {
  std::filesystem::remove(servers_.wwwDir() / hostFolder_ / Utf8Path(relative));
}

void CSyncTest::WriteGameFiles(const std::vector<SGameFile>& files) const {
  for (const SGameFile& file : files) game_.Write(file.path, file.bytes);
}

std::unique_ptr<patch::CPatcherService> CSyncTest::NewService() const {
  auto service = std::make_unique<patch::CPatcherService>(
      config_, patch::SServiceFolders{runtime_.wide(), L"", game_.wide(), launcherPath_});
  std::wstring error;
  EXPECT_TRUE(service->InitializeState(error)) << testing::PrintToString(error);
  return service;
}

patch::SPatchView CSyncTest::Sync(patch::CPatcherService& service, bool maintenance, bool synced) {
  patch::SPatchView status;
  status.patchNeeded = true;  // left from an earlier check
  std::wstring error = L"stale";
  EXPECT_EQ(service.SyncPatchState(http_, maintenance, status, error), synced) << testing::PrintToString(error);
  EXPECT_EQ(error, synced ? L"" : status.errorText);
  return status;
}

std::vector<std::string> CSyncTest::HostRequests(std::string_view needle, std::size_t atLeast) const {
  std::vector<std::string> lines;
  // nginx writes a request's line just after the client has its bytes.
  for (int tries = 0; tries < 40; ++tries) {
    if (tries > 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    lines.clear();
    std::istringstream log(servers_.HttpsAccessLog());
    for (std::string line; std::getline(log, line);) {
      if (line.find("/" + hostFolder_ + "/") != std::string::npos && line.find(needle) != std::string::npos) {
        lines.push_back(line);
      }
    }
    if (lines.size() >= atLeast) break;
  }
  return lines;
}

std::string CSyncTest::RuntimeFile(std::string_view name) const {
  return testing_support::ReadFileBytes(runtime_.path() / Utf8Path(name));
}

}  // namespace sync_tests
