#include <openssl/evp.h>

#include <array>

#include "crypto/hex.h"
#include "crypto/sha256_hasher.h"

namespace crypto {

struct CSha256Hasher::SState {
  EVP_MD_CTX* context = nullptr;

  ~SState() { EVP_MD_CTX_free(context); }
};

CSha256Hasher::CSha256Hasher() : state_(std::make_unique<SState>()) {}
CSha256Hasher::~CSha256Hasher() = default;

bool CSha256Hasher::Start(std::wstring& errorText) {
  state_->context = EVP_MD_CTX_new();
  if (state_->context == nullptr) {
    errorText = kSha256InitFailed;
    return false;
  }
  if (EVP_DigestInit_ex(state_->context, EVP_sha256(), nullptr) != 1) {
    errorText = kSha256ContextFailed;
    return false;
  }
  return true;
}

bool CSha256Hasher::Feed(const std::uint8_t* bytes, std::size_t count) {
  return EVP_DigestUpdate(state_->context, bytes, count) == 1;
}

bool CSha256Hasher::Finish(std::wstring& digest) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(state_->context, bytes.data(), &length) != 1) return false;
  digest = ToLowerHex(bytes.data(), length);
  return true;
}

}  // namespace crypto
