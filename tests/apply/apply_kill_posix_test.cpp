// A patch process killed in the middle of its downloads leaves every target
// either as it was or complete, and running it again finishes the job.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <optional>
#include <set>

#include "tests/apply/apply_test_support.h"
#include "text/utf.h"

namespace apply_tests {
namespace {

namespace fs = std::filesystem;
using testing_support::PatternBytes;

struct STarget {
  std::string path;
  std::optional<std::string> oldBytes;  // none: the file is new to the folder
  std::string newBytes;
};

class ApplyKilled : public CApplyTest {
 protected:
  // Starts the driver over `targets`; its first output line is its pid.
  FILE* StartDriver(const std::vector<STarget>& targets, int pauseMicroseconds, pid_t& pid) {
    const fs::path list = dir_.path() / "list.txt";
    std::ofstream out(list, std::ios::trunc);
    for (const STarget& target : targets) {
      const patch::SManifestEntry entry = Publish(target.path, target.newBytes);
      out << text::WideToUtf8(entry.sha256) << ' ' << entry.size << ' ' << target.path << '\n';
    }
    out.close();
    const std::string command = "exec '" VL_APPLY_DRIVER_PATH "' '" + (dir_.path() / "runtime").string() + "' '" +
                                (dir_.path() / "game").string() + "' '" + text::WideToUtf8(config_.patchHost) +
                                "' '" + list.string() + "' " + std::to_string(pauseMicroseconds);
    FILE* output = ::popen(command.c_str(), "r");
    if (output == nullptr || std::fscanf(output, "pid %d\n", &pid) != 1) pid = -1;
    return output;
  }

  // Reads on until a "bytes <done> <total>" line shows at least `percent` done; false at the end of output.
  static bool ReadUntilPercentDone(FILE* output, unsigned percent) {
    unsigned long long done = 0;
    unsigned long long total = 0;
    for (char line[256]; std::fgets(line, sizeof(line), output) != nullptr;) {
      if (std::sscanf(line, "bytes %llu %llu", &done, &total) == 2 && total != 0 && done * 100 >= total * percent) {
        return true;
      }
    }
    return false;
  }

  void ExpectEveryTargetOldOrNew(const std::vector<STarget>& targets) const {
    for (const STarget& target : targets) {
      if (!fs::exists(GamePath(target.path))) {
        EXPECT_FALSE(target.oldBytes.has_value()) << target.path;
        continue;
      }
      const std::string bytes = ReadGameFile(target.path);
      EXPECT_TRUE(bytes == target.newBytes || bytes == target.oldBytes) << target.path << ": " << bytes.size();
    }
  }
};

TEST_F(ApplyKilled, EveryTargetStaysOldOrNewAndARerunConverges) {
  const std::string shared = PatternBytes(1000000, 42);
  const std::vector<STarget> targets = {
      {"data/one.bin", PatternBytes(600000, 31), PatternBytes(1050000, 41)},
      {"data/two.bin", PatternBytes(1000000, 32), shared},
      {"data/three.bin", std::nullopt, PatternBytes(750000, 43)},
      {"maps/four.bin", PatternBytes(1500000, 34), PatternBytes(500000, 44)},
      {"maps/five.bin", PatternBytes(250000, 35), shared},
      {"six.bin", std::nullopt, PatternBytes(1250000, 46)},
  };
  for (const STarget& target : targets) {
    if (target.oldBytes) WriteGameFile(target.path, *target.oldBytes);
  }

  // Killed twice at different depths of the transfer, each run going on from the last.
  for (const unsigned percent : {25u, 60u}) {
    SCOPED_TRACE(percent);
    pid_t pid = -1;
    FILE* driver = StartDriver(targets, 500, pid);
    ASSERT_GT(pid, 0);
    const bool reached = ReadUntilPercentDone(driver, percent);
    ::kill(pid, SIGKILL);
    const int status = ::pclose(driver);
    ASSERT_TRUE(reached);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the run ended before it was killed";
    ExpectEveryTargetOldOrNew(targets);
  }

  pid_t pid = -1;
  FILE* driver = StartDriver(targets, 0, pid);
  ASSERT_GT(pid, 0);
  EXPECT_FALSE(ReadUntilPercentDone(driver, 101));
  const int status = ::pclose(driver);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  std::set<std::string> listed;
  for (const STarget& target : targets) {
    EXPECT_TRUE(ReadGameFile(target.path) == target.newBytes) << target.path;
    listed.insert(target.path);
  }
  // Beyond the list only a promotion temporary cut short by a kill may remain (the orphan scan's business).
  std::set<std::string> present;
  for (const auto& entry : fs::recursive_directory_iterator(GamePath(""))) {
    if (entry.is_regular_file() && entry.path().extension() != ".tmp") {
      present.insert(fs::relative(entry.path(), GamePath("")).generic_string());
    }
  }
  EXPECT_EQ(present, listed);
}

}  // namespace
}  // namespace apply_tests
