// A real fault on Linux: a game folder on a volume too small for the update.
// (A patch killed at any moment is the end-to-end case killed_many_times.)
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>

#include "log/log.h"
#include "tests/apply/apply_test_support.h"

namespace apply_tests {
namespace {

namespace fs = std::filesystem;
using testing_support::PatternBytes;

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
