#include "crypto/sha256.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/temp_dir.h"

namespace {

using crypto::HashFileSha256;
using crypto::HashMemorySha256;

constexpr std::size_t kBlock = 4 * 1024 * 1024;
constexpr wchar_t kEmptyInputDigest[] = L"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

std::wstring MemoryDigest(std::string_view bytes) {
  std::wstring digest;
  std::wstring error;
  EXPECT_TRUE(HashMemorySha256(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), digest, error))
      << error;
  return digest;
}

std::string PseudoRandomBytes(std::size_t size, unsigned seed) {
  std::mt19937 generator(seed);
  std::string bytes(size, '\0');
  for (char& b : bytes) b = static_cast<char>(generator());
  return bytes;
}

TEST(Sha256, MemoryAndFileMatchKnownVectors) {
  const struct {
    std::string message;
    std::wstring digest;
  } vectors[] = {
      {"", kEmptyInputDigest},
      {"abc", L"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       L"248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1000000, 'a'), L"cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  testing_support::TempDir dir;
  for (const auto& v : vectors) {
    std::wstring digest = L"stale";
    std::wstring error = L"stale";
    EXPECT_TRUE(HashMemorySha256(reinterpret_cast<const std::uint8_t*>(v.message.data()), v.message.size(), digest,
                                 error));
    EXPECT_EQ(digest, v.digest);
    EXPECT_EQ(error, L"");

    digest = L"stale";
    error = L"stale";
    EXPECT_TRUE(HashFileSha256(dir.Write("vector.bin", v.message), digest, error)) << error;
    EXPECT_EQ(digest, v.digest);
    EXPECT_EQ(error, L"");
  }
  std::wstring digest;
  std::wstring error;
  EXPECT_TRUE(HashMemorySha256(nullptr, 0, digest, error));
  EXPECT_EQ(digest, kEmptyInputDigest);
}

// Exactly one block, one byte over, and a short tail after two full blocks.
TEST(Sha256, FileAcrossBlockBoundariesEqualsMemoryHash) {
  testing_support::TempDir dir;
  for (const std::size_t size : {kBlock, kBlock + 1, 2 * kBlock + 12345}) {
    const std::string content = PseudoRandomBytes(size, static_cast<unsigned>(size));
    std::wstring digest;
    std::wstring error = L"stale";
    EXPECT_TRUE(HashFileSha256(dir.Write("blob.bin", content), digest, error)) << error;
    EXPECT_EQ(digest, MemoryDigest(content)) << size;
    EXPECT_EQ(error, L"");
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
