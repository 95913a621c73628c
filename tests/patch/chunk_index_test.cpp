#include "patch/chunk_index.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_servers.h"

namespace {

using patch::SChunkIndex;
using testing_support::PatternBytes;

SChunkIndex Chunked(const testing_support::TempDir& dir, const std::string& name, const std::string& bytes) {
  SChunkIndex index;
  std::wstring whole;
  std::wstring error;
  EXPECT_TRUE(patch::ChunkFile(dir.Write(name, bytes), patch::kDefaultChunking, index, whole, error));
  EXPECT_EQ(whole, testing_support::Sha256Of(bytes));
  return index;
}

// Cut points follow the content: an insertion and a change in a large file
// leave nearly every chunk as it was, and the same bytes always give the same index.
TEST(ChunkIndex, AnEditChangesOnlyTheChunksAroundItAndTheIndexReadsBack) {
  testing_support::TempDir dir;
  const std::string old = PatternBytes(6 * 1024 * 1024, 7);
  std::string edited = old;
  edited.insert(1500000, "inserted bytes");
  edited.replace(4000000, 1000, PatternBytes(1000, 8));
  edited.erase(5000000, 300);

  const SChunkIndex before = Chunked(dir, "old.pak", old);
  const SChunkIndex after = Chunked(dir, "new.pak", edited);
  EXPECT_EQ(Chunked(dir, "again.pak", old), before);
  std::set<std::wstring> held;
  for (const patch::SChunk& chunk : before.chunks) held.insert(chunk.sha256);
  std::uint64_t fresh = 0;
  for (const patch::SChunk& chunk : after.chunks) {
    EXPECT_GE(chunk.length, chunk.offset + chunk.length == edited.size() ? 1u : patch::kDefaultChunking.minSize);
    EXPECT_LE(chunk.length, patch::kDefaultChunking.maxSize);
    if (!held.contains(chunk.sha256)) fresh += chunk.length;
  }
  EXPECT_LE(fresh, 6u * patch::kDefaultChunking.maxSize) << "three edits touch at most two chunks each";

  SChunkIndex parsed;
  ASSERT_TRUE(patch::ParseChunkIndex(patch::WriteChunkIndex(after), parsed));
  EXPECT_EQ(parsed, after);
}

TEST(ChunkIndex, OnlyAnIndexThatTilesItsFileExactlyIsRead) {
  const std::string a(64, 'a');
  const std::string b(64, 'b');
  const std::string head = "vardeni-chunk-index 1\nfastcdc-gear64 64 128 256\nsize 300\n";
  const std::string body = "0 200 " + a + "\n200 100 " + b + "\n";
  SChunkIndex index;
  ASSERT_TRUE(patch::ParseChunkIndex(head + body, index));
  EXPECT_EQ(index.chunks.size(), 2u);

  const std::string refused[] = {
      "vardeni-chunk-index 2\nfastcdc-gear64 64 128 256\nsize 300\n" + body,
      "vardeni-chunk-index 1\nrabin 64 128 256\nsize 300\n" + body,
      "vardeni-chunk-index 1\nfastcdc-gear64 64 100 256\nsize 300\n" + body,   // average not a power of two
      "vardeni-chunk-index 1\nfastcdc-gear64 64 128 100\nsize 300\n" + body,   // maximum below the average
      "vardeni-chunk-index 1\nfastcdc-gear64 64 128 256\nsize 301\n" + body,   // falls short of the file
      head + "0 200 " + a + "\n201 99 " + b + "\n",                            // a gap
      head + "0 200 " + a + "\n199 101 " + b + "\n",                           // an overlap
      head + "0 300 " + a + "\n",                                              // longer than the maximum
      head + "0 50 " + a + "\n50 250 " + b + "\n",                             // short, and not the last
      head + "0 200 " + a + "\n200 200 " + b + "\n",                           // past the end
      head + "0 200 " + a + "\n200 100 " + b,                                  // no final line end
      head + "0 200 " + a + "\r\n200 100 " + b + "\n",
      head + "0 200 " + a + "\n0200 100 " + b + "\n",
      head + "0 200 " + std::string(64, 'A') + "\n200 100 " + b + "\n",
      head + "0 200 " + a + "\n200  100 " + b + "\n",
  };
  for (const std::string& text : refused) EXPECT_FALSE(patch::ParseChunkIndex(text, index)) << text;
  EXPECT_EQ(index.chunks.size(), 2u) << "a refused index leaves the last one alone";
}

}  // namespace
