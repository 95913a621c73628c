#include <windows.h>
#include <bcrypt.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "crypto/hex.h"
#include "crypto/sha256_hasher.h"

namespace crypto {

namespace {

bool QueryPositiveDword(BCRYPT_ALG_HANDLE algorithm, LPCWSTR property, DWORD& value) {
  ULONG written = 0;
  const NTSTATUS status = BCryptGetProperty(algorithm, property, reinterpret_cast<PUCHAR>(&value),
                                            sizeof(value), &written, 0);
  return BCRYPT_SUCCESS(status) && value != 0;
}

}  // namespace

// Member order matters: the hash object lives inside hashObject, so the
// destructor releases the hash and the provider before the buffers go.
struct CSha256Hasher::SState {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  std::vector<UCHAR> hashObject;
  std::vector<UCHAR> digestBytes;
  BCRYPT_HASH_HANDLE hash = nullptr;

  ~SState() {
    if (hash != nullptr) BCryptDestroyHash(hash);
    if (algorithm != nullptr) BCryptCloseAlgorithmProvider(algorithm, 0);
  }
};

CSha256Hasher::CSha256Hasher() : state_(std::make_unique<SState>()) {}
CSha256Hasher::~CSha256Hasher() = default;

bool CSha256Hasher::Start(std::wstring& errorText) {
  SState& s = *state_;
  if (!BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&s.algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0)) ||
      s.algorithm == nullptr) {
    errorText = kSha256InitFailed;
    return false;
  }
  DWORD objectLength = 0;
  if (!QueryPositiveDword(s.algorithm, BCRYPT_OBJECT_LENGTH, objectLength)) {
    errorText = kSha256ObjectLengthFailed;
    return false;
  }
  DWORD digestLength = 0;
  if (!QueryPositiveDword(s.algorithm, BCRYPT_HASH_LENGTH, digestLength)) {
    errorText = kSha256HashLengthFailed;
    return false;
  }
  s.hashObject.assign(objectLength, 0);
  s.digestBytes.assign(digestLength, 0);
  if (!BCRYPT_SUCCESS(BCryptCreateHash(s.algorithm, &s.hash, s.hashObject.data(), objectLength, nullptr, 0, 0)) ||
      s.hash == nullptr) {
    errorText = kSha256ContextFailed;
    return false;
  }
  return true;
}

bool CSha256Hasher::Feed(const std::uint8_t* bytes, std::size_t count) {
  // BCryptHashData takes a 32-bit length; larger blocks go in pieces.
  constexpr std::size_t kMaxPiece = std::numeric_limits<ULONG>::max();
  while (count > 0) {
    const std::size_t piece = std::min(count, kMaxPiece);
    if (!BCRYPT_SUCCESS(BCryptHashData(state_->hash, const_cast<PUCHAR>(bytes), static_cast<ULONG>(piece), 0))) {
      return false;
    }
    bytes += piece;
    count -= piece;
  }
  return true;
}

bool CSha256Hasher::Finish(std::wstring& digest) {
  SState& s = *state_;
  if (!BCRYPT_SUCCESS(BCryptFinishHash(s.hash, s.digestBytes.data(), static_cast<ULONG>(s.digestBytes.size()), 0))) {
    return false;
  }
  digest = ToLowerHex(s.digestBytes.data(), s.digestBytes.size());
  return true;
}

}  // namespace crypto
