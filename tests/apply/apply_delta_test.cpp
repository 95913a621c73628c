// Rebuilding a large file from its old copy: what reaches the game folder,
// which ranges the host is asked for, and each surprise that sends the file
// back to the whole download.
#include <gtest/gtest.h>

#include "patch/chunk_index.h"
#include "tests/apply/apply_test_support.h"

namespace apply_tests {
namespace {

using testing_support::PatternBytes;

// The next release of `bytes`: some inserted, some changed and some removed,
// far apart, so each edit costs one range.
std::string NextRelease(std::string bytes) {
  bytes.insert(1000000, PatternBytes(5000, 21));
  bytes.replace(3000000, 4000, PatternBytes(4000, 22));
  bytes.erase(5000000, 7000);
  return bytes;
}

class ApplyDelta : public CApplyTest {
 protected:
  // The entry with its blob and its chunk index published.
  patch::SManifestEntry PublishIndexed(const std::string& path, const std::string& bytes) const {
    patch::SManifestEntry entry = Publish(path, bytes);
    patch::SChunkIndex index;
    std::wstring whole;
    std::wstring error;
    EXPECT_TRUE(patch::ChunkFile(dir_.Write("index-source", bytes), patch::kDefaultChunking, index, whole, error));
    const std::string text = patch::WriteChunkIndex(index);
    entry.chunkIndexSha256 = Sha256Of(text);
    entry.chunkIndexSize = text.size();
    PublishBlob(entry.chunkIndexSha256, text);
    return entry;
  }

  const std::string old_ = PatternBytes(6 << 20, 20);
};

TEST_F(ApplyDelta, OnlyTheMissingRangesAreFetchedAndCounted) {
  WriteGameFile("data/big.pak", old_);
  const std::string next = NextRelease(old_);
  const patch::SManifestEntry entry = PublishIndexed("data/big.pak", next);

  const SApplyRun run = Apply({entry});

  ASSERT_TRUE(run.ok && run.error.empty()) << text::WideToUtf8(run.error);
  EXPECT_TRUE(ReadGameFile("data/big.pak") == next);
  EXPECT_EQ(HttpsLog(BlobUrlPath(entry.chunkIndexSha256)).size(), 1u);
  const std::vector<std::string> requests = HttpsLog(BlobUrlPath(entry.sha256));
  ASSERT_EQ(requests.size(), 3u);
  std::uint64_t fetched = 0;
  for (const std::string& request : requests) {
    unsigned long long first = 0;
    unsigned long long last = 0;
    ASSERT_EQ(std::sscanf(request.c_str() + request.find("Range: "), "Range: bytes=%llu-%llu", &first, &last), 2)
        << request;
    EXPECT_NE(request.find("| 206 |"), std::string::npos) << request;
    fetched += last + 1 - first;
  }
  EXPECT_LT(fetched, next.size() / 10);
  // The progress counts what crossed the wire, not the file's size.
  EXPECT_EQ(run.reports.back().bytesTotal, fetched + entry.chunkIndexSize);
  EXPECT_EQ(run.reports.back().bytesDone, run.reports.back().bytesTotal);
}

TEST_F(ApplyDelta, AnySurpriseFallsBackToTheWholeFileWithoutAnError) {
  config_.patchHost = servers_.FaultUrl(hostFolder_);
  const struct {
    const char* surprise;
    const char* blobFault;  // beside the blob on the fault server
    bool wrongIndex;
  } cases[] = {{"a range answered with 200", "ignore_range=1", false},
               {"a fetched chunk that does not match", "corrupt_ranges=1", false},
               {"an index that fails its hash", "", true}};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].surprise);
    const std::string path = "data/" + std::to_string(i) + ".pak";
    WriteGameFile(path, old_);
    const std::string next = NextRelease(old_) + cases[i].surprise;
    const patch::SManifestEntry entry = PublishIndexed(path, next);
    if (cases[i].wrongIndex) PublishBlob(entry.chunkIndexSha256, "vardeni-chunk-index 1\n");
    dir_.Write("fault-sidecar", cases[i].blobFault);
    std::filesystem::copy_file(dir_.path() / "fault-sidecar",
                               servers_.wwwDir() / (BlobUrlPath(entry.sha256) + ".fault"));

    const SApplyRun run = Apply({entry});

    ASSERT_TRUE(run.ok && run.error.empty()) << text::WideToUtf8(run.error);
    EXPECT_TRUE(ReadGameFile(path) == next);
    const std::vector<std::string> requests = FaultLog(BlobUrlPath(entry.sha256));
    ASSERT_FALSE(requests.empty());
    EXPECT_NE(requests.back().find("Range: -"), std::string::npos) << requests.back();
    EXPECT_EQ(requests.size() == 1, cases[i].wrongIndex);
    EXPECT_EQ(run.reports.back().bytesDone, run.reports.back().bytesTotal);
  }
}

}  // namespace
}  // namespace apply_tests
