// Runs one ApplyEntries for the kill test, in a process of its own so the
// test can kill it mid-run.
//
//   vl_apply_driver <runtime-folder> <game-folder> <patch-host> <list-file> <pause-microseconds>
//
// The list file has one "<sha256> <size> <path>" line per entry. Every
// download report prints "bytes <done> <total>" and then pauses, which slows
// the transfer enough for the test to find it half done. The first line is
// "pid <pid>" so a test reading through popen can kill it. Exits with 0 when
// every file was applied.

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include "net/http_client.h"
#include "patch/patcher_service.h"
#include "text/utf.h"

namespace {

bool ReadList(const char* file, patch::SManifest& manifest) {
  std::ifstream in(file);
  std::string sha256;
  std::string path;
  std::uint64_t size = 0;
  while (in >> sha256 >> size >> path) {
    manifest.files.push_back({text::Utf8ToWide(path), size, text::Utf8ToWide(sha256)});
  }
  return !manifest.files.empty();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  std::printf("pid %d\n", static_cast<int>(::getpid()));
  std::fflush(stdout);
  patch::SManifest manifest;
  if (!ReadList(argv[4], manifest)) return 2;
  const std::chrono::microseconds pause(std::stoll(argv[5]));

  LauncherConfig config;
  config.patchHost = text::Utf8ToWide(argv[3]);
  patch::CPatcherService service(config, {text::Utf8ToWide(argv[1]), L"", text::Utf8ToWide(argv[2]), L""});
  std::wstring error;
  if (!service.InitializeState(error)) return 2;

  const auto progress = [&](const patch::SPatchProgress& report) {
    if (report.phase != 4) return;
    std::printf("bytes %llu %llu\n", static_cast<unsigned long long>(report.bytesDone),
                static_cast<unsigned long long>(report.bytesTotal));
    std::fflush(stdout);
    std::this_thread::sleep_for(pause);
  };
  patch::SPatchOutcome outcome;
  const bool ok = service.ApplyEntries(net::CHttpClient(config), manifest, false, progress, outcome, error);
  std::printf("applied %llu failed %llu\n", static_cast<unsigned long long>(outcome.appliedCount),
              static_cast<unsigned long long>(outcome.failedCount));
  if (!error.empty()) std::fprintf(stderr, "%s\n", text::WideToUtf8(error).c_str());
  return ok && outcome.failedCount == 0 ? 0 : 1;
}
