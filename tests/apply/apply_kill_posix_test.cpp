// A patch process killed in the middle of its downloads leaves every target
// either as it was or complete, and running it again finishes the job.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <set>

#include "tests/apply/apply_test_support.h"
#include "text/utf.h"

extern char** environ;

namespace apply_tests {
namespace {

namespace fs = std::filesystem;
using testing_support::PatternBytes;

// The driver process with its standard output on a pipe.
class CDriver {
 public:
  explicit CDriver(std::vector<std::string> args) {
    args.insert(args.begin(), VL_APPLY_DRIVER_PATH);
    std::vector<char*> argv;
    for (auto& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    int fds[2];
    if (::pipe(fds) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    posix_spawn_file_actions_addclose(&actions, fds[1]);
    if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(fds[1]);
    output_ = ::fdopen(fds[0], "r");
  }

  ~CDriver() {
    if (pid_ > 0) {
      Kill();
      Wait();
    }
    if (output_ != nullptr) std::fclose(output_);
  }

  bool started() const { return pid_ > 0 && output_ != nullptr; }

  // Reads on until a "bytes <done> <total>" line shows at least `percent` done; false at the end of output.
  bool ReadUntilPercentDone(unsigned percent) {
    unsigned long long done = 0;
    unsigned long long total = 0;
    for (std::string line; ReadLine(line);) {
      if (std::sscanf(line.c_str(), "bytes %llu %llu", &done, &total) == 2 && total != 0 &&
          done * 100 >= total * percent) {
        return true;
      }
    }
    return false;
  }

  void Kill() const { ::kill(pid_, SIGKILL); }

  // The wait status.
  int Wait() {
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return status;
  }

 private:
  bool ReadLine(std::string& line) {
    char* buffer = nullptr;
    std::size_t capacity = 0;
    const ssize_t length = ::getline(&buffer, &capacity, output_);
    if (length > 0) line.assign(buffer, static_cast<std::size_t>(length));
    std::free(buffer);
    return length > 0;
  }

  pid_t pid_ = -1;
  FILE* output_ = nullptr;
};

struct STarget {
  std::string path;
  std::optional<std::string> oldBytes;  // none: the file is new to the folder
  std::string newBytes;
};

class ApplyKilled : public CApplyTest {
 protected:
  std::vector<std::string> DriverArgs(const std::vector<STarget>& targets, int pauseMicroseconds) {
    const fs::path list = dir_.path() / "list.txt";
    std::ofstream out(list, std::ios::trunc);
    for (const STarget& target : targets) {
      const patch::SManifestEntry entry = Publish(target.path, target.newBytes);
      out << text::WideToUtf8(entry.sha256) << ' ' << entry.size << ' ' << target.path << '\n';
    }
    return {(dir_.path() / "runtime").string(), (dir_.path() / "game").string(), text::WideToUtf8(config_.patchHost),
            list.string(), std::to_string(pauseMicroseconds)};
  }

  // No target may ever hold anything but its old or its complete new bytes.
  void ExpectEveryTargetOldOrNew(const std::vector<STarget>& targets) const {
    for (const STarget& target : targets) {
      SCOPED_TRACE(target.path);
      if (!fs::exists(GamePath(target.path))) {
        EXPECT_FALSE(target.oldBytes.has_value());
        continue;
      }
      const std::string bytes = ReadGameFile(target.path);
      EXPECT_TRUE(bytes == target.newBytes || bytes == target.oldBytes) << bytes.size() << " bytes";
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
    CDriver driver(DriverArgs(targets, 500));
    ASSERT_TRUE(driver.started());
    ASSERT_TRUE(driver.ReadUntilPercentDone(percent));
    driver.Kill();
    const int status = driver.Wait();
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the run ended before it was killed";
    ExpectEveryTargetOldOrNew(targets);
  }

  CDriver driver(DriverArgs(targets, 0));
  ASSERT_TRUE(driver.started());
  EXPECT_FALSE(driver.ReadUntilPercentDone(101));
  const int status = driver.Wait();
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
