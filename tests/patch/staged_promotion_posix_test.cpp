// On Linux only EBUSY and ETXTBSY mean "locked"; renaming a file over a folder
// fails with EISDIR, which must end the wait at once. (Windows reports that
// case as access denied, which it cannot tell apart from a lock.)
#include <gtest/gtest.h>

#include "patch/staged_promotion.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::TempDir;

TEST(StagedPromotionPosix, OtherFailuresEndTheWaitAtOnce) {
  TempDir dir;
  const fs::path source = dir.Write("new/launcher", "version 2");
  dir.Write("busy/launcher/inside", "x");
  const fs::path folder = dir.path() / "busy" / "launcher";
  std::wstring error;
  EXPECT_FALSE(patch::ReplaceLockedFile(source, folder, error, {1000, std::chrono::milliseconds(250)}));
  EXPECT_EQ(error.rfind(L"could not replace " + platform::FromPath(folder) + L": ", 0), 0u) << error;
  EXPECT_FALSE(fs::exists(dir.path() / "busy" / "launcher.promote.tmp"));
}

}  // namespace
