// Cost of the worst signature file the launcher accepts: 8 lines of which
// only the last verifies, and only under the second key, so all 16
// (line, key) checks run over a 256 KiB update list.
//
// Usage: signature_bench [iterations, default 200]

#include <sodium.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "crypto/manifest_signature.h"

namespace {

constexpr std::size_t kListSize = 256 * 1024;
constexpr int kLines = 8;
constexpr int kChecksPerCall = kLines * 2;

struct SKeyPair {
  PublicKey publicKey{};
  unsigned char secretKey[crypto_sign_SECRETKEYBYTES]{};
  SKeyPair() { crypto_sign_keypair(publicKey.data(), secretKey); }
};

std::string SignatureLine(const std::vector<std::uint8_t>& list, const SKeyPair& signer) {
  unsigned char signature[crypto_sign_BYTES];
  crypto_sign_detached(signature, nullptr, list.data(), list.size(), signer.secretKey);
  char text[sodium_base64_ENCODED_LEN(crypto_sign_BYTES, sodium_base64_VARIANT_ORIGINAL)];
  sodium_bin2base64(text, sizeof text, signature, sizeof signature, sodium_base64_VARIANT_ORIGINAL);
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const int iterations = argc > 1 ? std::atoi(argv[1]) : 200;
  if (iterations < 1 || sodium_init() < 0) {
    std::fprintf(stderr, "usage: signature_bench [iterations]\n");
    return 2;
  }
  std::vector<std::uint8_t> list(kListSize);
  std::mt19937 generator(7);
  for (auto& byte : list) byte = static_cast<std::uint8_t>(generator());

  const SKeyPair first;
  const SKeyPair second;
  const SKeyPair stranger;
  const std::array<PublicKey, 2> keys{first.publicKey, second.publicKey};
  std::string signatureFile;
  for (int i = 1; i < kLines; ++i) signatureFile += SignatureLine(list, stranger) + "\n";
  signatureFile += SignatureLine(list, second) + "\n";

  if (!crypto::VerifyManifestSignature(list.data(), list.size(), signatureFile, &keys)) {
    std::fprintf(stderr, "the worst-case file did not verify\n");
    return 1;
  }
  const auto start = std::chrono::steady_clock::now();
  int accepted = 0;
  for (int i = 0; i < iterations; ++i) {
    accepted += crypto::VerifyManifestSignature(list.data(), list.size(), signatureFile, &keys) ? 1 : 0;
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double perCall = seconds / iterations;
  std::printf("list %zu bytes, %d lines, %d checks per call, %d iterations (%d accepted)\n", kListSize, kLines,
              kChecksPerCall, iterations, accepted);
  std::printf("full check %.3f ms, one Ed25519 check %.1f us\n", perCall * 1e3, perCall / kChecksPerCall * 1e6);
  return 0;
}
