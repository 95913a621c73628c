// Real faults on Linux: a patch process killed mid-transfer, and a game folder
// on a volume too small for the update.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <set>

#include "log/log.h"
#include "tests/apply/apply_test_support.h"

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
  // Runs the entries in a child process that reports each download step's
  // (done, total) down `reportPipe_` and then pauses, slow enough to be caught half done.
  pid_t StartChildRun(const std::vector<patch::SManifestEntry>& files) {
    int ends[2];
    if (::pipe(ends) != 0) return -1;
    const pid_t pid = ::fork();
    if (pid == 0) {
      ::close(ends[0]);
      Apply(*MakeService(), files, false, [&](const patch::SPatchProgress& report) {
        const std::uint64_t step[2] = {report.bytesDone, report.bytesTotal};
        if (report.phase == 4 && ::write(ends[1], step, sizeof(step)) == sizeof(step)) ::usleep(500);
      });
      ::_exit(0);
    }
    ::close(ends[1]);
    reportPipe_ = ends[0];
    return pid;
  }

  // False when the child ends before it gets that far.
  bool WaitUntilPercentDone(unsigned percent) const {
    std::uint64_t step[2];
    while (::read(reportPipe_, step, sizeof(step)) == sizeof(step)) {
      if (step[1] != 0 && step[0] * 100 >= step[1] * percent) return true;
    }
    return false;
  }

  int reportPipe_ = -1;
};

// Every target is either as it was or complete, and running again finishes the job.
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
  std::vector<patch::SManifestEntry> files;
  for (const STarget& target : targets) {
    if (target.oldBytes) WriteGameFile(target.path, *target.oldBytes);
    files.push_back(Publish(target.path, target.newBytes));
  }

  // Killed twice at different depths of the transfer, each run going on from the last.
  for (const unsigned percent : {25u, 60u}) {
    SCOPED_TRACE(percent);
    const pid_t pid = StartChildRun(files);
    ASSERT_GT(pid, 0);
    const bool reached = WaitUntilPercentDone(percent);
    ::kill(pid, SIGKILL);
    int status = 0;
    ::waitpid(pid, &status, 0);
    ::close(reportPipe_);
    ASSERT_TRUE(reached);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the run ended before it was killed";
    for (const STarget& target : targets) {
      if (!fs::exists(GamePath(target.path))) {
        EXPECT_FALSE(target.oldBytes.has_value()) << target.path;
        continue;
      }
      const std::string bytes = ReadGameFile(target.path);
      EXPECT_TRUE(bytes == target.newBytes || bytes == target.oldBytes) << target.path << ": " << bytes.size();
    }
  }

  const SApplyRun rerun = Apply(*MakeService(), files, false);
  ASSERT_TRUE(rerun.ok && rerun.error.empty()) << text::WideToUtf8(rerun.error);
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

// The game folder is a small tmpfs of its own, so it is also a volume apart
// from the staging folder and must hold its need plus the margin.
class ApplyDiskShortage : public CApplyTest {
 protected:
  void SetUp() override {
    CApplyTest::SetUp();
    fs::create_directories(GamePath(""));
    if (::mount("tmpfs", GamePath("").c_str(), "tmpfs", 0, "size=8m") != 0) {
      GTEST_SKIP() << "mounting a tmpfs needs root (CAP_SYS_ADMIN): " << std::strerror(errno);
    }
    mounted_ = true;
    fs::create_directories(dir_.path() / "log");
    logging::OpenLog(platform::FromPath(dir_.path() / "log"), L"", L"");
  }

  void TearDown() override {
    logging::OpenLog(L"", L"", L"");
    if (mounted_) ::umount2(GamePath("").c_str(), MNT_DETACH);
  }

  bool mounted_ = false;
};

TEST_F(ApplyDiskShortage, RunStopsBeforeWritingAnything) {
  const SApplyRun run = Apply({Publish("data/a.bin", PatternBytes(1048576, 21))});

  EXPECT_FALSE(run.ok);
  EXPECT_EQ(run.error, L"There is not enough free disk space for this update.");
  EXPECT_FALSE(run.SawPhase(4));
  EXPECT_TRUE(fs::is_empty(GamePath("")));
  const std::string log = testing_support::ReadFileBytes(dir_.path() / "log" / "launcher.log");
  // Need: the new file plus room for its promotion temporary; 8 MiB free at most.
  EXPECT_NE(log.find("not enough free space: need 2097152 B in the game folder ("), std::string::npos) << log;
  EXPECT_NE(log.find(" B free) and 1048576 B for staging ("), std::string::npos) << log;
}

}  // namespace
}  // namespace apply_tests
