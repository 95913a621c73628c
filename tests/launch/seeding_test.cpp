#include "patch/seeding.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/embedded_resource.h"
#include "platform/path_text.h"
#include "tests/launch/probe_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using launch_test::ResourceText;
using testing_support::ReadFileBytes;
using testing_support::TempDir;
using Names = std::vector<std::wstring>;

TEST(Seeding, TheProgramCarriesTheDefaultFilesByteForByte) {
  EXPECT_EQ(ResourceText(203), "10002 1256 ae");
  EXPECT_EQ(ResourceText(205), "7\t3");
  EXPECT_TRUE(platform::LoadEmbeddedResource(299).empty());

  const std::string korvex = ResourceText(204);
  ASSERT_EQ(korvex.size(), 1491u);
  EXPECT_EQ(korvex.rfind("WIDTH\t1600\nHEIGHT\t1009\nBPP\t32\nFREQUENCY\t60\n", 0), 0u);
  EXPECT_NE(korvex.find("\nWINDOWED\t1\n"), std::string::npos);
  EXPECT_EQ(korvex.back(), '\n');
}

TEST(Seeding, WritesOnlyTheMissingFilesAndNeverTouchesAPresentOne) {
  struct SCase {
    std::vector<std::string> existing;
    Names written;
    Names present;
  };
  const SCase cases[] = {
      {{}, {L"locale.cfg", L"korvex.cfg", L"mouse.cfg"}, {}},
      {{"korvex.cfg", "locale.cfg"}, {L"mouse.cfg"}, {L"locale.cfg", L"korvex.cfg"}},
      {{"locale.cfg", "korvex.cfg", "mouse.cfg"}, {}, {L"locale.cfg", L"korvex.cfg", L"mouse.cfg"}},
  };
  for (const SCase& c : cases) {
    TempDir dir;
    const fs::path game = dir.path() / "not yet" / "app";
    for (const std::string& name : c.existing) dir.Write("not yet/app/" + name, "");
    const patch::SSeedResult result = patch::SeedMissingConfigs(platform::FromPath(game));
    EXPECT_EQ(result.written, c.written);
    EXPECT_EQ(result.present, c.present);
    EXPECT_TRUE(result.failed.empty());
    for (const patch::SSeedFile& seed : patch::kSeedFiles) {
      const bool existed = std::find(c.present.begin(), c.present.end(), seed.fileName) != c.present.end();
      EXPECT_EQ(ReadFileBytes(game / platform::ToPath(seed.fileName)), existed ? "" : ResourceText(seed.resourceId));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(game), fs::directory_iterator()), 3);
  }
}

TEST(Seeding, AStaleTemporaryIsOverwrittenAndAFolderOfASeedsNameCountsAsPresent) {
  TempDir dir;
  dir.Write("locale.cfg.seed.tmp", "left by a crash, longer than the seed");
  fs::create_directories(dir.path() / "korvex.cfg");
#ifndef _WIN32
  // A link planted under the temporary's name is never written through.
  const fs::path outside = dir.Write("outside/notes.txt", "mine");
  fs::create_symlink(outside, dir.path() / "mouse.cfg.seed.tmp");
#endif
  const patch::SSeedResult result = patch::SeedMissingConfigs(dir.wide());
  EXPECT_EQ(result.written, (Names{L"locale.cfg", L"mouse.cfg"}));
  EXPECT_EQ(result.present, Names{L"korvex.cfg"});
  EXPECT_EQ(ReadFileBytes(dir.path() / "locale.cfg"), ResourceText(203));
  EXPECT_FALSE(fs::exists(dir.path() / "locale.cfg.seed.tmp"));
#ifndef _WIN32
  EXPECT_EQ(ReadFileBytes(outside), "mine");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(dir.path() / "mouse.cfg")));
#endif
}

TEST(Seeding, AFileThatAppearsBeforeTheRenameWinsAndTheCopyIsDiscarded) {
  TempDir dir;
  const fs::path target = dir.Write("korvex.cfg", "WIDTH\t800\n");
  const std::string seed = ResourceText(204);
  EXPECT_FALSE(patch::WriteSeedFile(target, reinterpret_cast<const std::uint8_t*>(seed.data()), seed.size()));
  EXPECT_EQ(ReadFileBytes(target), "WIDTH\t800\n");
  EXPECT_FALSE(fs::exists(dir.path() / "korvex.cfg.seed.tmp"));
}

TEST(Seeding, FilesThatCannotBeWrittenAreReportedAsFailed) {
  TempDir dir;
  // A file where the game folder should be: nothing can be created inside it.
  const fs::path notAFolder = dir.Write("app", "file");
  const patch::SSeedResult result = patch::SeedMissingConfigs(platform::FromPath(notAFolder));
  EXPECT_EQ(result.failed, (Names{L"locale.cfg", L"korvex.cfg", L"mouse.cfg"}));
  EXPECT_TRUE(result.written.empty());
  EXPECT_TRUE(result.present.empty());
}

}  // namespace
