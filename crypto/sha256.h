#pragma once
// SHA-256 of a file or a block of memory through the operating system's
// provider (CNG on Windows, OpenSSL libcrypto elsewhere).
//
// Both functions empty `digest` first. On success it holds 64 lower-case
// hexadecimal digits and `errorText` is emptied; on failure the result is
// false and `errorText` holds the complete sentence to log or show. Every call
// uses its own provider state, so any thread may call at any time.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace crypto {

class CSha256Hasher;

// Streams the file in 4 MiB blocks; never loads it whole.
bool HashFileSha256(const std::filesystem::path& path, std::wstring& digest, std::wstring& errorText);

// `bytes` may be null when `count` is zero (the empty-input digest).
bool HashMemorySha256(const std::uint8_t* bytes, std::uint64_t count, std::wstring& digest,
                      std::wstring& errorText);

// SHA-256 of a file's bytes handed over in order while the file is being
// written, so a download is verified without reading it back. The first
// failure is kept and reported by Finish with HashFileSha256's sentences.
class CSha256FileStream {
 public:
  CSha256FileStream();
  ~CSha256FileStream();
  CSha256FileStream(const CSha256FileStream&) = delete;
  CSha256FileStream& operator=(const CSha256FileStream&) = delete;

  void Feed(const std::uint8_t* bytes, std::size_t count);
  bool Finish(std::wstring& digest, std::wstring& errorText);

 private:
  std::unique_ptr<CSha256Hasher> hasher_;
  std::wstring error_;
};

}  // namespace crypto
