// Speed of the orphan scan over a large game folder, in both forms.
//
// Usage: orphan_scan_bench [file count, default 50000]
// Builds a tree of nested folders in the temporary folder: one file in 20 is
// left out of the update list (an orphan), one in 20 carries a protected
// name, the rest are listed. Each form is timed over three runs with the
// folder cached; the best run is reported. The tree is removed afterwards.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "patch/orphan_scan.h"
#include "platform/path_text.h"

namespace {

namespace fs = std::filesystem;

constexpr int kRuns = 3;
constexpr int kFilesPerFolder = 100;
constexpr int kFoldersPerPack = 10;

struct STree {
  fs::path root;
  patch::SManifest manifest;
  std::uint64_t files = 0;
  std::uint64_t orphans = 0;
  std::uint64_t orphanBytes = 0;
};

std::wstring Padded(std::uint64_t number, int width) {
  std::wstring digits = std::to_wstring(number);
  return std::wstring(static_cast<std::size_t>(std::max(0, width - static_cast<int>(digits.size()))), L'0') + digits;
}

// pack007/sub3/file042.dat; every 20th file an orphan, every 20th (offset 10) a log.
bool BuildTree(std::uint64_t fileCount, STree& tree) {
  std::random_device seed;
  tree.root = fs::temp_directory_path() / platform::ToPath(L"vl-orphan-bench-" + std::to_wstring(seed()));
  const std::string content(64, 'x');
  for (std::uint64_t i = 0; i < fileCount; ++i) {
    const std::uint64_t folder = i / kFilesPerFolder;
    const std::wstring relative = L"pack" + Padded(folder / kFoldersPerPack, 3) + L"/sub" +
                                  std::to_wstring(folder % kFoldersPerPack) + L"/file" +
                                  Padded(i % kFilesPerFolder, 3) + (i % 20 == 10 ? L".log" : L".dat");
    const fs::path file = tree.root / platform::ToPath(relative);
    if (i % kFilesPerFolder == 0) fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out) return false;
    if (i % 20 == 0) {
      ++tree.orphans;
      tree.orphanBytes += content.size();
    } else if (i % 20 != 10) {
      tree.manifest.files.push_back({relative, content.size(), std::wstring(64, L'0')});
    }
  }
  tree.files = fileCount;
  return true;
}

// Best wall time of kRuns scans in seconds; false when a scan fails or miscounts.
bool TimeScan(const STree& tree, std::size_t sampleLimit, double& best, patch::SOrphanScan& scan) {
  best = 1e300;
  const std::wstring folder = platform::FromPath(tree.root);
  for (int run = 0; run < kRuns; ++run) {
    std::wstring error;
    const auto start = std::chrono::steady_clock::now();
    if (!patch::ScanOrphans(folder, tree.manifest, sampleLimit, L"", scan, error)) return false;
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    if (scan.orphanFiles != tree.orphans || scan.orphanBytes != tree.orphanBytes) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint64_t fileCount = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 50000;
  if (fileCount == 0) {
    std::fprintf(stderr, "usage: orphan_scan_bench [file count]\n");
    return 2;
  }

  STree tree;
  const auto buildStart = std::chrono::steady_clock::now();
  const bool built = BuildTree(fileCount, tree);
  const double buildSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - buildStart).count();
  int status = 0;
  if (!built) {
    std::fprintf(stderr, "could not build the tree\n");
    status = 1;
  } else {
    std::printf("tree: %llu files in %llu folders, %zu listed, %llu orphans; built in %.0f ms\n",
                static_cast<unsigned long long>(tree.files),
                static_cast<unsigned long long>((tree.files + kFilesPerFolder - 1) / kFilesPerFolder),
                tree.manifest.files.size(), static_cast<unsigned long long>(tree.orphans), buildSeconds * 1000);
    const struct {
      const char* name;
      std::size_t sampleLimit;
    } forms[] = {{"counting form (sample 50)", patch::kOrphanSampleLimit},
                 {"full form (every orphan)", patch::kUnlimitedOrphanSample}};
    for (const auto& form : forms) {
      double seconds = 0;
      patch::SOrphanScan scan;
      if (!TimeScan(tree, form.sampleLimit, seconds, scan)) {
        std::fprintf(stderr, "%s: scan failed or miscounted\n", form.name);
        status = 1;
        continue;
      }
      std::printf("%-27s %10.0f files/s %9.1f ms total, %zu paths listed\n", form.name,
                  static_cast<double>(tree.files) / seconds, seconds * 1000, scan.orphanSample.size());
    }
  }
  std::error_code ignored;
  fs::remove_all(tree.root, ignored);
  return status;
}
