// What only a POSIX system shows: file modes, and names only its file systems can hold.

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/publisher/publisher_test_support.h"

namespace publisher_testing {
namespace {

class PublisherPosix : public CPublisherTest {};

TEST_F(PublisherPosix, KeygenWritesTheSecretReadableOnlyByItsOwner) {
  // A umask that would take the owner's write bit away is overridden.
  const mode_t previous = umask(0277);
  const SToolKey key = MakeKey(dir_.path(), "narrow-umask.key");
  umask(previous);
  for (const auto& file : {key_.secretFile, key.secretFile}) {
    EXPECT_EQ(std::filesystem::status(file).permissions() & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  }
}

TEST_F(PublisherPosix, SkipsNamesALauncherCouldNotInstallAndRefusesCaseTwins) {
  WriteGame("ok.txt", "ok");
  WriteGame("bad:name.txt", "x");
  WriteGame("back\\slash.txt", "x");
  WriteGame("aux.txt", "x");
  WriteGame("trailing.", "x");
  WriteGame("\xFF.bin", "x");
  std::filesystem::create_directory_symlink(Game(), Game() / "loop");
  const SToolRun run = PublishRelease(1);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  for (const char* line : {"skipped bad:name.txt: Windows cannot store this name",
                           "skipped back\\slash.txt: Windows cannot store this name",
                           "skipped aux.txt: Windows cannot store this name",
                           "skipped trailing.: Windows cannot store this name",
                           "skipped ?.bin: its name is not valid Unicode",
                           "skipped loop: a link to a folder is not followed"}) {
    EXPECT_TRUE(Contains(run.err, line));
  }
  patch::SManifest list;
  ASSERT_EQ(AcceptPublished(Host(), 1, L"stable", key_.publicKey, list), patch::EManifestVerdict::Valid);
  ASSERT_EQ(list.files.size(), 1u);
  EXPECT_EQ(list.files[0].path, L"ok.txt");

  WriteGame("OK.txt", "twin");
  const SToolRun twins = PublishRelease(2);
  EXPECT_EQ(twins.exitCode, 1);
  EXPECT_TRUE(Contains(twins.err, "same name apart from letter case: OK.txt and ok.txt"));
  EXPECT_EQ(PointerRelease(Host(), L"stable"), 1u);
}

}  // namespace
}  // namespace publisher_testing
