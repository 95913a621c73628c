// One patch run, timed: ApplyEntries brings a game folder into line with an
// update list whose blobs sit on a patch host. Driven by patch_bench.sh (an
// empty folder, against curl) and delta_bench.sh (an older release in place).
//
// Usage: patch_bench <patch host url> <list file> <work folder>
//                    [--chunk-indexes <file>] [--keep-game]
//   list file: one "<sha256> <size> <relative path>" line per file
//   work folder: "runtime" is made afresh inside it, and "game" too unless
//     --keep-game says the caller has filled it
//   --chunk-indexes: one "<file sha256> <index sha256> <index size>" line per
//     file content that has a chunk index on the host
//
// Prints the figures for people, then one "result" line for the script:
//   result seconds=<wall> bytes=<listed> maxrss_kib=<peak resident set>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unordered_map>

#include <sys/resource.h>

#include "app/launcher_config.h"
#include "net/http_client.h"
#include "patch/manifest.h"
#include "patch/patcher_service.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace {

namespace fs = std::filesystem;

bool ReadList(const fs::path& file, patch::SManifest& manifest, std::uint64_t& totalBytes) {
  std::ifstream in(file);
  std::string sha256;
  std::uint64_t size = 0;
  std::string path;
  totalBytes = 0;
  while (in >> sha256 >> size && std::getline(in >> std::ws, path)) {
    manifest.files.push_back({text::Utf8ToWide(path), size, text::Utf8ToWide(sha256)});
    totalBytes += size;
  }
  return !manifest.files.empty();
}

// Names each entry's chunk index by the entry's content.
bool AddChunkIndexes(const fs::path& file, patch::SManifest& manifest) {
  std::unordered_map<std::wstring, std::pair<std::wstring, std::uint64_t>> indexes;
  std::ifstream in(file);
  std::string sha256;
  std::string indexSha256;
  std::uint64_t indexSize = 0;
  while (in >> sha256 >> indexSha256 >> indexSize) {
    indexes[text::Utf8ToWide(sha256)] = {text::Utf8ToWide(indexSha256), indexSize};
  }
  for (patch::SManifestEntry& entry : manifest.files) {
    const auto found = indexes.find(entry.sha256);
    if (found == indexes.end()) continue;
    entry.chunkIndexSha256 = found->second.first;
    entry.chunkIndexSize = found->second.second;
  }
  return !indexes.empty();
}

long PeakResidentKib() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;  // KiB on Linux
}

}  // namespace

int main(int argc, char** argv) {
  fs::path chunkIndexes;
  bool keepGame = false;
  bool usable = argc >= 4;
  for (int i = 4; usable && i < argc; ++i) {
    const std::string option = argv[i];
    if (option == "--keep-game") {
      keepGame = true;
    } else if (option == "--chunk-indexes" && i + 1 < argc) {
      chunkIndexes = argv[++i];
    } else {
      usable = false;
    }
  }
  if (!usable) {
    std::fprintf(stderr,
                 "usage: patch_bench <patch host url> <list file> <work folder> [--chunk-indexes <file>] "
                 "[--keep-game]\n");
    return 2;
  }
  patch::SManifest manifest;
  manifest.version = 1;
  manifest.channel = L"stable";
  std::uint64_t totalBytes = 0;
  if (!ReadList(argv[2], manifest, totalBytes)) {
    std::fprintf(stderr, "no entries in %s\n", argv[2]);
    return 2;
  }
  if (!chunkIndexes.empty() && !AddChunkIndexes(chunkIndexes, manifest)) {
    std::fprintf(stderr, "no chunk indexes in %s\n", chunkIndexes.c_str());
    return 2;
  }
  const fs::path work = fs::path(argv[3]);
  const fs::path gameFolder = work / "game";
  const fs::path runtimeFolder = work / "runtime";
  if (!keepGame) fs::remove_all(gameFolder);
  fs::remove_all(runtimeFolder);
  fs::create_directories(gameFolder);
  fs::create_directories(runtimeFolder);

  LauncherConfig config;
  config.patchHost = text::Utf8ToWide(argv[1]);
  patch::CPatcherService service(
      config, patch::SServiceFolders{platform::FromPath(runtimeFolder), L"", platform::FromPath(gameFolder), L""});
  std::wstring error;
  service.InitializeState(error);
  const net::CHttpClient http(config);

  // Keeps each report as the launcher's window would, so their cost is counted.
  patch::SPatchProgress lastReport;
  std::uint64_t reports = 0;
  const auto keepReport = [&](const patch::SPatchProgress& report) {
    lastReport = report;
    ++reports;
  };

  patch::SPatchOutcome outcome;
  const auto start = std::chrono::steady_clock::now();
  const bool ok = service.ApplyEntries(http, manifest, false, keepReport, outcome, error);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const long peakKib = PeakResidentKib();

  std::printf("  ApplyEntries: %zu files, %.1f MB in %.2f s", manifest.files.size(),
              static_cast<double>(totalBytes) / 1e6, seconds);
  // Over a folder already filled, most listed bytes never travel: no rate.
  if (!keepGame) std::printf(" = %.1f MB/s", static_cast<double>(totalBytes) / 1e6 / seconds);
  std::printf("; applied %llu, failed %llu\n", static_cast<unsigned long long>(outcome.appliedCount),
              static_cast<unsigned long long>(outcome.failedCount));
  std::printf("  peak resident set: %.1f MiB; %llu progress reports, the last at %.1f Mbit/s\n",
              static_cast<double>(peakKib) / 1024.0, static_cast<unsigned long long>(reports), lastReport.speedMbps);
  if (!ok || outcome.failedCount != 0) {
    std::fprintf(stderr, "patch failed: %s\n", text::WideToUtf8(error).c_str());
    return 1;
  }
  std::printf("result seconds=%.4f bytes=%llu maxrss_kib=%ld\n", seconds, static_cast<unsigned long long>(totalBytes),
              peakKib);
  return 0;
}
