#include "crypto/ed25519.h"

#include <gtest/gtest.h>

#include "tests/crypto/rfc8032_vectors.h"
#include "tests/crypto/signing_support.h"

namespace {

using crypto::Ed25519Signature;
using crypto::IsCanonicalEd25519Scalar;
using crypto::VerifyEd25519Signature;
using signing_support::HexBytes;

TEST(Ed25519, AcceptsRfc8032VectorsAndRefusesAnyChange) {
  for (const auto& v : rfc8032::kVectors) {
    SCOPED_TRACE(v.name);
    const std::vector<std::uint8_t> message = HexBytes(v.message);
    const std::vector<std::uint8_t> keyBytes = HexBytes(v.publicKey);
    const std::vector<std::uint8_t> signatureBytes = HexBytes(v.signature);
    PublicKey key{};
    Ed25519Signature signature{};
    std::copy(keyBytes.begin(), keyBytes.end(), key.begin());
    std::copy(signatureBytes.begin(), signatureBytes.end(), signature.begin());

    EXPECT_TRUE(VerifyEd25519Signature(signature, key, message.data(), message.size()));

    std::vector<std::uint8_t> longer = message;
    longer.push_back(0);
    EXPECT_FALSE(VerifyEd25519Signature(signature, key, longer.data(), longer.size()));

    for (const std::size_t flipped : {std::size_t{0}, std::size_t{40}}) {  // in R, in S
      Ed25519Signature changed = signature;
      changed[flipped] ^= 0x01;
      EXPECT_FALSE(VerifyEd25519Signature(changed, key, message.data(), message.size())) << flipped;
    }
    PublicKey otherKey = key;
    otherKey[0] ^= 0x01;
    EXPECT_FALSE(VerifyEd25519Signature(signature, otherKey, message.data(), message.size()));
  }
}

TEST(Ed25519, CanonicalScalarIsBelowGroupOrder) {
  const struct {
    const char* scalarHex;  // little-endian
    bool canonical;
  } cases[] = {
      {"ecd3f55c1a631258d69cf7a2def9de1400000000000000000000000000000010", true},   // L - 1
      {"edd3f55c1a631258d69cf7a2def9de1400000000000000000000000000000010", false},  // L
      {"eed3f55c1a631258d69cf7a2def9de1400000000000000000000000000000010", false},  // L + 1
      {"0000000000000000000000000000000000000000000000000000000000000010", true},   // 2^252
      {"ffffffffffffffffffffffffffffff1400000000000000000000000000000010", false},  // low half too big
      {"ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff0f", true},   // below 2^252
      {"ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff", false},
  };
  for (const auto& c : cases) {
    const std::vector<std::uint8_t> scalar = HexBytes(c.scalarHex);
    EXPECT_EQ(IsCanonicalEd25519Scalar(std::span<const std::uint8_t, 32>(scalar.data(), 32)), c.canonical)
        << c.scalarHex;
  }
}

TEST(Ed25519, ConfiguredPublicKeysMustBeHexPointsOfLargeOrder) {
  PublicKey key{};
  // RFC 8032 section 7.1, TEST 1.
  ASSERT_TRUE(crypto::ParsePublicKeyHex(L"D75A980182B10AB7D54BFED3C964073A0EE172F3DAA62325AF021A68F707511A", key));
  EXPECT_EQ(key[0], 0xd7);
  EXPECT_EQ(key[31], 0x1a);
  EXPECT_TRUE(crypto::IsUsablePublicKey(key));

  for (const wchar_t* bad : {L"d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511",
                             L"d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a0",
                             L"g75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a"}) {
    EXPECT_FALSE(crypto::ParsePublicKeyHex(bad, key)) << bad;
  }

  PublicKey zero{};
  PublicKey identity{};
  identity[0] = 1;  // the neutral point: small order, signs anything under a cofactored check
  EXPECT_FALSE(crypto::IsUsablePublicKey(zero));
  EXPECT_FALSE(crypto::IsUsablePublicKey(identity));
}

}  // namespace
