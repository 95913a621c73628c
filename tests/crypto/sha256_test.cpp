#include "crypto/sha256.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/temp_dir.h"

namespace {

using crypto::HashFileSha256;
using crypto::HashMemorySha256;

constexpr std::size_t kBlock = 4 * 1024 * 1024;

// The digest of the bytes hashed in memory and as a file, each expected to succeed
// and to clear the error text.
std::pair<std::wstring, std::wstring> MemoryAndFileDigests(const std::string& bytes) {
  testing_support::TempDir dir;
  std::pair<std::wstring, std::wstring> digests;
  std::wstring error = L"stale";
  EXPECT_TRUE(
      HashMemorySha256(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), digests.first, error));
  EXPECT_EQ(error, L"");
  error = L"stale";
  EXPECT_TRUE(HashFileSha256(dir.Write("blob.bin", bytes), digests.second, error)) << error;
  EXPECT_EQ(error, L"");
  return digests;
}

TEST(Sha256, MemoryAndFileMatchKnownVectors) {
  const struct {
    std::string message;
    std::wstring digest;
  } vectors[] = {
      {"", L"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", L"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       L"248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
  };
  for (const auto& v : vectors) {
    EXPECT_EQ(MemoryAndFileDigests(v.message), std::make_pair(v.digest, v.digest)) << v.message;
  }
  std::wstring digest;
  std::wstring error;
  EXPECT_TRUE(HashMemorySha256(nullptr, 0, digest, error));
  EXPECT_EQ(digest, vectors[0].digest);
}

// Exactly one block, one byte over, and a short tail after two full blocks.
TEST(Sha256, FileAcrossBlockBoundariesEqualsMemoryHash) {
  for (const std::size_t size : {kBlock, kBlock + 1, 2 * kBlock + 12345}) {
    std::mt19937 generator(static_cast<unsigned>(size));
    std::string content(size, '\0');
    for (char& b : content) b = static_cast<char>(generator());
    const auto digests = MemoryAndFileDigests(content);
    EXPECT_EQ(digests.first, digests.second) << size;
  }
}

// A folder opens as a stream on Linux and fails on the first read; Windows
// refuses to open it. Either way it must not pass as an empty file.
TEST(Sha256, MissingFileOrFolderFailsWithEmptyDigest) {
  testing_support::TempDir dir;
  for (const auto& path : {dir.path() / "absent.bin", dir.path()}) {
    std::wstring digest = L"stale";
    std::wstring error;
    EXPECT_FALSE(HashFileSha256(path, digest, error));
    EXPECT_EQ(digest, L"");
    if (path == dir.path() && error == L"Could not read file during hash verification.") continue;
    EXPECT_EQ(error, L"Could not open file for hash verification.");
  }
}

}  // namespace
