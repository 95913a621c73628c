// Throughput of the file form of the SHA-256 hash next to the standard tools,
// all on the same file with the page cache warm.
//
// Usage: sha256_bench [size in MiB, default 1024]
// The file is kept in the temporary folder and reused by later runs. MB/s
// counts 1,000,000 bytes; each figure is the best of three runs.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "crypto/sha256.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace {

constexpr int kRuns = 3;
constexpr std::uint64_t kMiB = 1024 * 1024;

std::string Utf8Path(const std::filesystem::path& path) { return text::WideToUtf8(platform::FromPath(path)); }

std::filesystem::path BenchFile(std::uint64_t sizeMiB) {
  const auto path = std::filesystem::temp_directory_path() /
                    platform::ToPath(L"vl-sha256-bench-" + std::to_wstring(sizeMiB) + L"MiB.bin");
  std::error_code error;
  if (std::filesystem::file_size(path, error) == sizeMiB * kMiB) return path;

  std::printf("writing %llu MiB to %s\n", static_cast<unsigned long long>(sizeMiB), Utf8Path(path).c_str());
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  std::mt19937_64 generator(42);
  std::vector<std::uint64_t> block(kMiB / sizeof(std::uint64_t));
  for (std::uint64_t i = 0; i < sizeMiB; ++i) {
    std::generate(block.begin(), block.end(), std::ref(generator));
    out.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(kMiB));
  }
  return path;
}

// Best wall time of kRuns calls, in seconds; false when any call failed.
bool BestSeconds(const std::function<bool()>& run, double& best) {
  best = 1e300;
  for (int i = 0; i < kRuns; ++i) {
    const auto start = std::chrono::steady_clock::now();
    if (!run()) return false;
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return true;
}

std::string FirstWord(const std::filesystem::path& file) {
  std::ifstream in(file);
  std::string word;
  in >> word;
  return word;
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint64_t sizeMiB = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1024;
  if (sizeMiB == 0) {
    std::fprintf(stderr, "usage: sha256_bench [size in MiB]\n");
    return 2;
  }
  const std::filesystem::path file = BenchFile(sizeMiB);
  const double megabytes = static_cast<double>(sizeMiB * kMiB) / 1e6;

  std::wstring digest;
  std::wstring error;
  if (!crypto::HashFileSha256(file, digest, error)) {  // also warms the page cache
    std::fprintf(stderr, "hash failed: %s\n", text::WideToUtf8(error).c_str());
    return 1;
  }
  const std::string expected = text::WideToUtf8(digest);
  std::printf("file %s, %.0f MB, sha256 %s\n", Utf8Path(file).c_str(), megabytes, expected.c_str());

  double ours = 0;
  BestSeconds([&] { return crypto::HashFileSha256(file, digest, error); }, ours);
  std::printf("%-22s %8.1f MB/s\n", "HashFileSha256", megabytes / ours);

  const std::filesystem::path output = file.parent_path() / platform::ToPath(L"vl-sha256-bench.out");
  const std::string quotedFile = "\"" + Utf8Path(file) + "\"";
  const std::string redirect = " > \"" + Utf8Path(output) + "\"";
  for (const char* tool : {"openssl dgst -sha256 -r", "sha256sum"}) {
    const std::string command = std::string(tool) + " " + quotedFile + redirect;
    double seconds = 0;
    const bool ran = BestSeconds([&] { return std::system(command.c_str()) == 0; }, seconds);
    if (!ran || FirstWord(output) != expected) {
      std::printf("%-22s unavailable or disagrees\n", tool);
      continue;
    }
    std::printf("%-22s %8.1f MB/s   speed ours/tool %.3f\n", tool, megabytes / seconds, seconds / ours);
  }
  std::error_code ignored;
  std::filesystem::remove(output, ignored);
  return 0;
}
