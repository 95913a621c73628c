// A stand-in for the game and the launcher in process tests. It records where
// and with what it was started in "probe.out" in its working folder, then,
// when given "--hold", keeps running until "probe.release" appears there.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  bool hold = false;
  {
    // Written beside and renamed, so a reader never sees half a record.
    std::ofstream out("probe.out.tmp", std::ios::binary | std::ios::trunc);
    out << fs::current_path().string() << '\n';
    for (int i = 1; i < argc; ++i) {
      out << argv[i] << '\n';
      hold = hold || std::string(argv[i]) == "--hold";
    }
  }
  std::error_code error;
  fs::rename("probe.out.tmp", "probe.out", error);
  // Bounded, so a failed test never leaves it running for long.
  for (int waited = 0; hold && waited < 600 && !fs::exists("probe.release"); ++waited) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return error ? 1 : 0;
}
