#pragma once
// The OS seam behind crypto/sha256.h: one SHA-256 computation with the
// platform's provider. sha256.cpp drives it; sha256_win.cpp (CNG) and
// sha256_posix.cpp (libcrypto) implement it.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace crypto {

// Sentences of the provider steps; the callers' own sentences live in sha256.cpp.
inline constexpr wchar_t kSha256InitFailed[] = L"Could not initialize SHA-256 verification.";
inline constexpr wchar_t kSha256ObjectLengthFailed[] = L"Could not query SHA-256 object length.";
inline constexpr wchar_t kSha256HashLengthFailed[] = L"Could not query SHA-256 hash length.";
inline constexpr wchar_t kSha256ContextFailed[] = L"Could not create SHA-256 hash context.";

class CSha256Hasher {
 public:
  CSha256Hasher();
  ~CSha256Hasher();
  CSha256Hasher(const CSha256Hasher&) = delete;
  CSha256Hasher& operator=(const CSha256Hasher&) = delete;

  // Opens the provider and a fresh hash. On failure errorText holds the
  // sentence of the step that failed.
  bool Start(std::wstring& errorText);
  // Adds bytes to the hash; false when the provider refused them.
  bool Feed(const std::uint8_t* bytes, std::size_t count);
  // Finishes the hash and writes it as lower-case hexadecimal.
  bool Finish(std::wstring& digest);

 private:
  struct SState;
  std::unique_ptr<SState> state_;
};

}  // namespace crypto
