// Integrity check of a game folder through the patcher service, next to the
// standard tools over the same tree, with the page cache warm throughout.
//
// Usage: integrity_bench [file count, default 20000] [largest file in KiB, default 64]
//
// Builds a tree of files (largest/128 to largest, log-uniform) and an update
// list for it in the temporary folder, then times the check a synchronisation
// makes (every entry at once, hashing on the service's thread pool):
//   cold:   every entry with an empty cache (hashes every file), against
//           `xargs -P2 openssl dgst -sha256` and `xargs -0 sha256sum`;
//   warm:   the same again, every lookup a cache hit, against a bare stat walk
//           `find -type f -printf '%s %T@\n'`;
//   reload: warm, but from a new service that reads "integrity.cache" first
//           (what a fresh launcher start sees).
// Each figure is the best of three runs. The tree is removed at the end.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

#include "app/launcher_config.h"
#include "crypto/sha256.h"
#include "patch/entry_verification.h"
#include "patch/manifest.h"
#include "patch/patcher_service.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace {

constexpr int kRuns = 3;
constexpr int kFilesPerFolder = 100;
constexpr double kSmallestToLargest = 128;

namespace fs = std::filesystem;

std::string Utf8Path(const fs::path& path) { return text::WideToUtf8(platform::FromPath(path)); }

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Best wall time of kRuns calls, in seconds; `prepare` runs untimed before each.
double BestSeconds(const std::function<void()>& prepare, const std::function<void()>& run) {
  double best = 1e300;
  for (int i = 0; i < kRuns; ++i) {
    prepare();
    const auto start = std::chrono::steady_clock::now();
    run();
    best = std::min(best, SecondsSince(start));
  }
  return best;
}

// Writes `count` files of random bytes under `gameFolder` and returns their entries.
bool BuildTree(const fs::path& gameFolder, int count, double largest, patch::SManifest& manifest,
               std::uint64_t& totalBytes) {
  std::mt19937_64 generator(20000);
  std::uniform_real_distribution<double> logSize(std::log(largest / kSmallestToLargest), std::log(largest));
  std::vector<std::uint8_t> bytes;
  totalBytes = 0;
  for (int i = 0; i < count; ++i) {
    const std::wstring relative = L"data/d" + std::to_wstring(i / kFilesPerFolder) + L"/f" + std::to_wstring(i) + L".bin";
    const auto size = static_cast<std::size_t>(std::exp(logSize(generator)));
    bytes.resize(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(generator());

    const fs::path target = gameFolder / platform::ToPath(relative);
    fs::create_directories(target.parent_path());
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!out) return false;

    patch::SManifestEntry entry{relative, size, {}};
    std::wstring error;
    if (!crypto::HashMemorySha256(bytes.data(), size, entry.sha256, error)) return false;
    manifest.files.push_back(std::move(entry));
    totalBytes += size;
  }
  return true;
}

// Verifies every entry as a synchronisation does; returns the number that
// failed and prints the first failure.
int VerifyAll(patch::CPatcherService& service, const fs::path& gameFolder, const patch::SManifest& manifest) {
  std::vector<std::wstring> paths;
  std::vector<const patch::SManifestEntry*> entries;
  for (const patch::SManifestEntry& entry : manifest.files) {
    paths.push_back(platform::FromPath(gameFolder / platform::ToPath(entry.path)));
    entries.push_back(&entry);
  }
  patch::CEntryVerification verification(service, paths, entries);
  int failures = 0;
  std::wstring error;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (!verification.Passed(i, &error) && failures++ == 0) {
      std::fprintf(stderr, "%s: %s\n", text::WideToUtf8(entries[i]->path).c_str(), text::WideToUtf8(error).c_str());
    }
  }
  return failures;
}

std::unique_ptr<patch::CPatcherService> StartService(const LauncherConfig& config, const fs::path& runtimeFolder,
                                                     const fs::path& gameFolder) {
  auto service = std::make_unique<patch::CPatcherService>(
      config, patch::SServiceFolders{platform::FromPath(runtimeFolder), L"", platform::FromPath(gameFolder), L""});
  std::wstring error;
  service->InitializeState(error);
  return service;
}

double ShellSeconds(const std::string& command) {
  return BestSeconds([] {}, [&] {
    if (std::system(command.c_str()) != 0) std::fprintf(stderr, "command failed: %s\n", command.c_str());
  });
}

void PrintLine(const char* label, double seconds, int files) {
  std::printf("  %-40s %9.1f ms  %7.2f us/file\n", label, seconds * 1e3, seconds * 1e6 / files);
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 20000;
  const double largest = 1024.0 * (argc > 2 ? std::atof(argv[2]) : 64.0);
  if (count <= 0 || largest < kSmallestToLargest) {
    std::fprintf(stderr, "usage: integrity_bench [file count] [largest file in KiB]\n");
    return 2;
  }
  const fs::path root = fs::temp_directory_path() / platform::ToPath(L"vl-integrity-bench-" + std::to_wstring(getpid()));
  const fs::path gameFolder = root / "game";
  const fs::path runtimeFolder = root / "runtime";

  patch::SManifest manifest;
  std::uint64_t totalBytes = 0;
  std::printf("writing %d files to %s\n", count, Utf8Path(gameFolder).c_str());
  if (!BuildTree(gameFolder, count, largest, manifest, totalBytes)) {
    std::fprintf(stderr, "could not write the tree\n");
    fs::remove_all(root);
    return 1;
  }
  std::printf("%d files, %.1f MB, page cache warm\n\n", count, static_cast<double>(totalBytes) / 1e6);

  const LauncherConfig config;
  const std::string quotedGame = std::string("'").append(Utf8Path(gameFolder)).append("'");
  int failures = 0;

  // Each cold run starts from an empty runtime folder, so nothing is cached.
  std::unique_ptr<patch::CPatcherService> service;
  const double cold = BestSeconds(
      [&] {
        service.reset();
        fs::remove_all(runtimeFolder);
        fs::create_directories(runtimeFolder);
        service = StartService(config, runtimeFolder, gameFolder);
      },
      [&] { failures += VerifyAll(*service, gameFolder, manifest); });
  const double sha256sum = ShellSeconds("find " + quotedGame + " -type f -print0 | xargs -0 sha256sum > /dev/null");
  const double openssl =
      ShellSeconds("find " + quotedGame + " -type f -print0 | xargs -0 -P2 -n64 openssl dgst -sha256 > /dev/null");

  const double warm = BestSeconds([] {}, [&] { failures += VerifyAll(*service, gameFolder, manifest); });
  service->PersistIntegrityCache();
  const double find = ShellSeconds("find " + quotedGame + " -type f -printf '%s %T@\\n' > /dev/null");

  const double reload = BestSeconds(
      [&] {
        service.reset();
        service = StartService(config, runtimeFolder, gameFolder);
      },
      [&] { failures += VerifyAll(*service, gameFolder, manifest); });
  service.reset();

  const double megabytes = static_cast<double>(totalBytes) / 1e6;
  std::printf("cold (empty cache, every file hashed):\n");
  PrintLine("the launcher's check", cold, count);
  PrintLine("find | xargs -P2 openssl dgst -sha256", openssl, count);
  PrintLine("find | xargs -0 sha256sum", sha256sum, count);
  std::printf("  ours %.1f MB/s, openssl -P2 %.1f MB/s, sha256sum %.1f MB/s; ours / openssl -P2 throughput: %.2f"
              " (goal at least 0.9)\n\n",
              megabytes / cold, megabytes / openssl, megabytes / sha256sum, openssl / cold);
  std::printf("warm (every file a cache hit):\n");
  PrintLine("the launcher's check", warm, count);
  PrintLine("the launcher's check, cache reloaded", reload, count);
  PrintLine("find -printf '%s %T@'", find, count);
  std::printf("  warm / find: %.2f (goal at most 1.5), reloaded / find: %.2f\n", warm / find, reload / find);

  fs::remove_all(root);
  if (failures != 0) {
    std::fprintf(stderr, "%d verifications failed\n", failures);
    return 1;
  }
  return 0;
}
