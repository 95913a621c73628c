#include "crypto/sha256.h"

#include <fstream>
#include <memory>

#include "crypto/sha256_hasher.h"
#include "platform/path_text.h"

namespace crypto {

namespace {

constexpr std::size_t kFileBlockSize = 4 * 1024 * 1024;

constexpr wchar_t kOpenFailed[] = L"Could not open file for hash verification.";
constexpr wchar_t kHashFileFailed[] = L"Could not hash file content.";
constexpr wchar_t kReadFailed[] = L"Could not read file during hash verification.";
constexpr wchar_t kHashMemoryFailed[] = L"Could not hash in-memory content.";
constexpr wchar_t kFinalizeFailed[] = L"Could not finalize SHA-256 hash.";

bool FinishInto(CSha256Hasher& hasher, std::wstring& digest, std::wstring& errorText) {
  if (!hasher.Finish(digest)) {
    digest.clear();
    errorText = kFinalizeFailed;
    return false;
  }
  errorText.clear();
  return true;
}

}  // namespace

bool HashFileSha256(const std::filesystem::path& path, std::wstring& digest, std::wstring& errorText) {
  digest.clear();
  std::ifstream file(platform::SystemPath(path), std::ios::binary);
  if (!file.is_open()) {
    errorText = kOpenFailed;
    return false;
  }
  CSha256Hasher hasher;
  if (!hasher.Start(errorText)) return false;

  // Reads larger than the stream's own buffer go straight from the OS into
  // this block, so each byte is copied once before it is hashed. Left
  // uninitialised: zeroing 4 MiB would cost more than hashing a small file.
  const auto block = std::make_unique_for_overwrite<char[]>(kFileBlockSize);
  while (file) {
    file.read(block.get(), static_cast<std::streamsize>(kFileBlockSize));
    const std::streamsize got = file.gcount();
    if (got < 1) break;
    if (!hasher.Feed(reinterpret_cast<const std::uint8_t*>(block.get()), static_cast<std::size_t>(got))) {
      errorText = kHashFileFailed;
      return false;
    }
  }
  // A short last block sets failbit together with eofbit; only a stop before
  // the end of the file is a read error.
  if (!file.eof() && (file.fail() || file.bad())) {
    errorText = kReadFailed;
    return false;
  }
  return FinishInto(hasher, digest, errorText);
}

CSha256FileStream::CSha256FileStream() : hasher_(std::make_unique<CSha256Hasher>()) {
  hasher_->Start(error_);
}

CSha256FileStream::~CSha256FileStream() = default;

void CSha256FileStream::Feed(const std::uint8_t* bytes, std::size_t count) {
  if (error_.empty() && !hasher_->Feed(bytes, count)) error_ = kHashFileFailed;
}

bool CSha256FileStream::Finish(std::wstring& digest, std::wstring& errorText) {
  digest.clear();
  if (!error_.empty()) {
    errorText = error_;
    return false;
  }
  return FinishInto(*hasher_, digest, errorText);
}

bool HashMemorySha256(const std::uint8_t* bytes, std::uint64_t count, std::wstring& digest,
                      std::wstring& errorText) {
  digest.clear();
  CSha256Hasher hasher;
  if (!hasher.Start(errorText)) return false;
  if (count != 0 && !hasher.Feed(bytes, static_cast<std::size_t>(count))) {
    errorText = kHashMemoryFailed;
    return false;
  }
  return FinishInto(hasher, digest, errorText);
}

}  // namespace crypto
