// The detached signature file of a list. The key is made from a fixed seed,
// so the corpus can hold a line that really verifies over kList.
#include <sodium.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "crypto/manifest_signature.h"

namespace {

constexpr std::string_view kList = "{\"schema\":1,\"version\":7,\"channel\":\"stable\",\"files\":[]}\n";

std::array<PublicKey, 2> FixedKeys() {
  std::array<PublicKey, 2> keys{};
  std::uint8_t seed[crypto_sign_SEEDBYTES] = {7};
  std::uint8_t secret[crypto_sign_SECRETKEYBYTES];
  if (sodium_init() < 0 || crypto_sign_seed_keypair(keys[1].data(), secret, seed) != 0) __builtin_trap();
  return keys;  // slot 0 stays empty, as in a launcher built with one key
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::array<PublicKey, 2> keys = FixedKeys();
  crypto::VerifyManifestSignature(reinterpret_cast<const std::uint8_t*>(kList.data()), kList.size(),
                                  {reinterpret_cast<const char*>(data), size}, &keys);
  return 0;
}
