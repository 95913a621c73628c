// publish, run as the built program on temporary folders.

#include <gtest/gtest.h>

#include <algorithm>

#include "crypto/sha256.h"
#include "patch/blob_path.h"
#include "platform/path_text.h"
#include "tests/publisher/publisher_test_support.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_servers.h"
#include "text/utf.h"

namespace publisher_testing {
namespace {

using testing_support::PatternBytes;
using testing_support::ReadFileBytes;

class Publish : public CPublisherTest {};

patch::SManifestEntry EntryFor(const std::filesystem::path& file, std::wstring path) {
  patch::SManifestEntry entry{std::move(path), std::filesystem::file_size(file), L""};
  std::wstring error;
  EXPECT_TRUE(crypto::HashFileSha256(file, entry.sha256, error)) << text::WideToUtf8(error);
  return entry;
}

TEST_F(Publish, ReleaseIsAcceptedByTheLauncherAndMatchesTheFolder) {
  const std::string pak = PatternBytes(5000, 2);
  const auto exe = WriteGame("game.exe", PatternBytes(100000));
  const auto a = WriteGame("data/a.pak", pak);
  const auto copy = WriteGame("data/copy.pak", pak);
  const auto named = WriteGame("donn\xC3\xA9" "es/\xC3\xA9\xF0\x9F\x98\x80.txt", "accents");
  const auto empty = WriteGame("empty.dat", "");
  const auto launcher = dir_.Write("VardeniLauncher.exe", PatternBytes(7000, 5));

  const SToolRun run = PublishRelease(3, {L"--launcher", Text(launcher), L"--launcher-version", L"1.0.6"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, "blobs written: 5\n"));
  EXPECT_TRUE(Contains(run.out, "blobs reused: 0\n"));
  EXPECT_EQ(PointerRelease(Host(), L"stable"), 3u);

  patch::SManifest list;
  ASSERT_EQ(AcceptPublished(Host(), 3, L"stable", key_.publicKey, list), patch::EManifestVerdict::Valid);
  EXPECT_EQ(list.channel, L"stable");
  const patch::SManifestEntry launcherEntry = EntryFor(launcher, L"");
  EXPECT_TRUE(list.hasLauncher);
  EXPECT_EQ(list.launcherProductVersion, L"1.0.6");
  EXPECT_EQ(list.launcherSize, launcherEntry.size);
  EXPECT_EQ(list.launcherSha256, launcherEntry.sha256);
  EXPECT_EQ(ReadFileBytes(HostFile(patch::BlobPathForHash(list.launcherSha256))), ReadFileBytes(launcher));
  // Sorted by path; the same content listed twice, one blob.
  const std::vector<patch::SManifestEntry> expected = {
      EntryFor(a, L"data/a.pak"), EntryFor(copy, L"data/copy.pak"),
      EntryFor(named, text::Utf8ToWide("donn\xC3\xA9" "es/\xC3\xA9\xF0\x9F\x98\x80.txt")),
      EntryFor(empty, L"empty.dat"), EntryFor(exe, L"game.exe")};
  EXPECT_EQ(list.files, expected);
  for (const patch::SManifestEntry& entry : list.files) {
    EXPECT_EQ(ReadFileBytes(HostFile(patch::BlobPathForHash(entry.sha256))),
              ReadFileBytes(Game() / platform::ToPath(entry.path)));
  }
  EXPECT_EQ(CountBlobs(Host()), 5u);

  // Pure ASCII, the name escaped with a surrogate pair for the emoji.
  const std::string bytes = ReadFileBytes(HostFile(L"patchlist.v3.json"));
  EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 128; }));
  EXPECT_TRUE(Contains(bytes, R"("path":"donn\u00e9es/\u00e9\ud83d\ude00.txt")"));
  // Nothing half-written is left behind.
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Host())) {
    EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
  }
}

TEST_F(Publish, RefusesAReleaseNotAboveTheChannelsCurrentOne) {
  WriteGame("a.txt", "a");
  ASSERT_EQ(PublishRelease(5).exitCode, 0);

  for (std::uint64_t release : {5, 4}) {
    const SToolRun run = PublishRelease(release);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(
        Contains(run.err, "release " + std::to_string(release) + " is not above the current stable release 5"));
  }
  EXPECT_FALSE(std::filesystem::exists(HostFile(L"patchlist.v4.json")));
  EXPECT_EQ(PointerRelease(Host(), L"stable"), 5u);

  // Channels count apart.
  ASSERT_EQ(PublishRelease(1, {}, L"beta").exitCode, 0);
  EXPECT_EQ(PointerRelease(Host(), L"beta"), 1u);
  patch::SManifest beta;
  EXPECT_EQ(AcceptPublished(Host(), 1, L"beta", key_.publicKey, beta), patch::EManifestVerdict::Valid);

  const SToolRun forced = PublishRelease(4, {L"--force"});
  EXPECT_EQ(forced.exitCode, 0) << forced.err;
  EXPECT_TRUE(Contains(forced.err, "warning: release 4 is not above the current stable release 5"));
  EXPECT_EQ(PointerRelease(Host(), L"stable"), 4u);
}

TEST_F(Publish, PointerMovesOnlyOnceTheListAndEveryBlobAreInPlaceAndUnchangedFilesKeepTheirBlobs) {
  for (int i = 0; i < 20; ++i) WriteGame("data/file" + std::to_string(i) + ".bin", PatternBytes(3000, i + 1));
  ASSERT_EQ(PublishRelease(1).exitCode, 0);
  WriteGame("data/file7.bin", "second");

  // A folder where the new blob belongs makes the blob step fail.
  const std::filesystem::path blob = BlobFile("second");
  std::filesystem::create_directories(blob / "obstacle");
  EXPECT_EQ(PublishRelease(2).exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(HostFile(L"patchlist.v2.json")));
  EXPECT_EQ(PointerRelease(Host(), L"stable"), 1u);
  std::filesystem::remove_all(blob);

  // A folder where the signature file belongs makes the list step fail, after the blob step.
  std::filesystem::create_directories(HostFile(L"patchlist.v2.sig") / "obstacle");
  EXPECT_EQ(PublishRelease(2).exitCode, 1);
  EXPECT_EQ(PointerRelease(Host(), L"stable"), 1u);
  std::filesystem::remove_all(HostFile(L"patchlist.v2.sig"));

  // The leftovers of the failed attempts never stop the next one, and every blob is there already.
  const SToolRun retry = PublishRelease(2);
  EXPECT_EQ(retry.exitCode, 0) << retry.err;
  EXPECT_TRUE(Contains(retry.out, "blobs written: 0\n"));
  EXPECT_TRUE(Contains(retry.out, "blobs reused: 20\n"));
  EXPECT_EQ(CountBlobs(Host()), 21u);  // release 1's blob of the old file stays for its launchers
  EXPECT_EQ(PointerRelease(Host(), L"stable"), 2u);
}

TEST_F(Publish, RefusesAnEmptyGameOrAListLargerThanALauncherAcceptsBeforeWritingAnything) {
  std::filesystem::create_directories(Game() / "empty");
  const SToolRun empty = PublishRelease(1);
  EXPECT_EQ(empty.exitCode, 1);
  EXPECT_TRUE(Contains(empty.err, "holds no file that could be published"));

  for (int i = 0; i < 2800; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "f/%05d.dat", i);
    WriteGame(name, "x");
  }
  const SToolRun run = PublishRelease(1);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_TRUE(Contains(run.err, "more than the 262144 bytes a launcher accepts"));
  EXPECT_EQ(CountBlobs(Host()), 0u);
  EXPECT_FALSE(std::filesystem::exists(HostFile(L"patchlist.v1.json")));

  // A file from 4 MiB on is counted with its chunk index member (a digest and a
  // size), before anything is hashed: both sizes below have seven digits.
  const auto listBytes = [&](std::uintmax_t bigSize) {
    std::filesystem::resize_file(WriteGame("big.pak", ""), bigSize);
    const std::string err = PublishRelease(1).err;
    const auto at = err.find("would be ");
    return at == std::string::npos ? 0 : std::stoull(err.substr(at + 9));
  };
  const std::uint64_t withoutIndex = listBytes(4 * 1024 * 1024 - 1);
  const std::uint64_t withIndex = listBytes(4 * 1024 * 1024);
  ASSERT_GT(withoutIndex, 262144u);
  EXPECT_GE(withIndex - withoutIndex, std::string(R"(,"chunks":{"sha256":"","size":1})").size() + 64);
}


}  // namespace
}  // namespace publisher_testing
