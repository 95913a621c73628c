#pragma once
// SHA-256 of a file or a block of memory through the operating system's
// provider (CNG on Windows, OpenSSL libcrypto elsewhere).
//
// Both functions empty `digest` first. On success it holds 64 lower-case
// hexadecimal digits and `errorText` is emptied; on failure the result is
// false and `errorText` holds the complete sentence to log or show. Every call
// uses its own provider state, so any thread may call at any time.

#include <cstdint>
#include <filesystem>
#include <string>

namespace crypto {

// Streams the file in 4 MiB blocks; never loads it whole.
bool HashFileSha256(const std::filesystem::path& path, std::wstring& digest, std::wstring& errorText);

// `bytes` may be null when `count` is zero (the empty-input digest).
bool HashMemorySha256(const std::uint8_t* bytes, std::uint64_t count, std::wstring& digest,
                      std::wstring& errorText);

}  // namespace crypto
