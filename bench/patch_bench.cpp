// One patch run, timed: ApplyEntries brings an empty game folder into line
// with an update list whose blobs sit on a patch host. Driven by
// patch_bench.sh, which builds the release, serves it and times curl against it.
//
// Usage: patch_bench <patch host url> <list file> <work folder>
//   list file: one "<sha256> <size> <relative path>" line per file
//   work folder: "game" and "runtime" are made afresh inside it
//
// Prints the figures for people, then one "result" line for the script:
//   result seconds=<wall> bytes=<applied> maxrss_kib=<peak resident set>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

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

long PeakResidentKib() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;  // KiB on Linux
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: patch_bench <patch host url> <list file> <work folder>\n");
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
  const fs::path work = fs::path(argv[3]);
  const fs::path gameFolder = work / "game";
  const fs::path runtimeFolder = work / "runtime";
  fs::remove_all(gameFolder);
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

  std::printf("  ApplyEntries: %zu files, %.1f MB in %.2f s = %.1f MB/s; applied %llu, failed %llu\n",
              manifest.files.size(), static_cast<double>(totalBytes) / 1e6, seconds,
              static_cast<double>(totalBytes) / 1e6 / seconds, static_cast<unsigned long long>(outcome.appliedCount),
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
