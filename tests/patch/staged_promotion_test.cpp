#include "patch/staged_promotion.h"

#include <gtest/gtest.h>

#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFileBytes;
using testing_support::TempDir;

const std::wstring kHash = L"ab34567890abcdef1234567890abcdef1234567890abcdef1234567890abcdef";

std::wstring Text(const fs::path& path) { return platform::FromPath(path); }

TEST(StagedPromotion, StagedPathsNeedLowerCaseSha256) {
  const fs::path root = platform::ToPath(L"staging");
  EXPECT_EQ(patch::StagedBlobPath(root, kHash), root / "ab" / platform::ToPath(kHash));
  EXPECT_EQ(Text(patch::PartialBlobPath(root, kHash)), Text(root / "ab" / platform::ToPath(kHash)) + L".part");
  for (const std::wstring& bad : {L"A" + kHash.substr(1), kHash.substr(0, 63)}) {
    EXPECT_TRUE(patch::StagedBlobPath(root, bad).empty()) << bad.size();
    EXPECT_TRUE(patch::PartialBlobPath(root, bad).empty()) << bad.size();
  }
}

TEST(StagedPromotion, PrepareChecksStagedFileAndCreatesTargetFolders) {
  TempDir dir;
  std::wstring error;
  const fs::path staged = dir.path() / "staged";
  const fs::path target = dir.path() / "game" / "data" / "deep" / "a.bin";
  EXPECT_FALSE(patch::PrepareStagedPromotion(staged, target, error));
  EXPECT_EQ(error, L"staged file is missing: " + Text(staged));

  dir.Write("staged", "new");
  ASSERT_TRUE(patch::PrepareStagedPromotion(staged, target, error)) << error;
  EXPECT_TRUE(fs::is_directory(target.parent_path()));

  dir.Write("blocker", "a file where a folder must go");
  const fs::path blocked = dir.path() / "blocker" / "sub" / "a.bin";
  EXPECT_FALSE(patch::PrepareStagedPromotion(staged, blocked, error));
  EXPECT_EQ(error, L"failed to create " + Text(blocked.parent_path()));
}

TEST(StagedPromotion, PromoteReplacesTheTargetOrFailsLeavingNoTemporary) {
  TempDir dir;
  const fs::path staged = dir.Write("staged", "new");
  const fs::path replaced = dir.Write("game/a.bin", "old");
  std::wstring error;
  ASSERT_TRUE(patch::PromoteStagedFile(staged, replaced, error)) << error;
  EXPECT_EQ(ReadFileBytes(replaced), "new");
  EXPECT_EQ(ReadFileBytes(staged), "new");  // a blob may serve further targets

  dir.Write("game/target/inside", "a folder cannot be replaced by a file");
  const fs::path target = dir.path() / "game" / "target";
  EXPECT_FALSE(patch::PromoteStagedFile(staged, target, error));
  EXPECT_EQ(error.rfind(L"failed to replace " + Text(target) + L": ", 0), 0u) << error;
  EXPECT_EQ(error.find(L"copy"), std::wstring::npos) << error;
  EXPECT_FALSE(fs::exists(dir.path() / "game" / "target.promote.tmp"));

  const fs::path missing = dir.path() / "missing";
  EXPECT_FALSE(patch::PromoteStagedFile(missing, dir.path() / "game" / "b.bin", error));
  EXPECT_EQ(error.rfind(L"failed to replace " + Text(dir.path() / "game" / "b.bin") + L": copy ", 0), 0u) << error;
}

TEST(StagedPromotion, ReplaceLockedFileReplacesAndReportsOtherFailuresAtOnce) {
  TempDir dir;
  std::wstring error;
  EXPECT_FALSE(patch::ReplaceLockedFile({}, dir.path() / "x", error));
  EXPECT_EQ(error, L"replacement paths are invalid");
  EXPECT_FALSE(patch::ReplaceLockedFile(dir.path() / "x", {}, error));
  EXPECT_EQ(error, L"replacement paths are invalid");

  const fs::path target = dir.Write("install/launcher.exe", "version 1");
  const fs::path missing = dir.path() / "missing.exe";
  EXPECT_FALSE(patch::ReplaceLockedFile(missing, target, error));
  EXPECT_EQ(error.rfind(L"could not stage the replacement for " + Text(target) + L": ", 0), 0u) << error;
  ASSERT_TRUE(patch::ReplaceLockedFile(dir.Write("new/launcher.exe", "version 2"), target, error)) << error;
  EXPECT_EQ(ReadFileBytes(target), "version 2");
}

}  // namespace
