#include "crypto/manifest_signature.h"

#include <gtest/gtest.h>

#include "tests/crypto/signing_support.h"

namespace {

using crypto::VerifyManifestSignature;
using signing_support::Base64Of;
using signing_support::SKeyPair;

// Made once: key generation is the slow part of these tests.
const SKeyPair& SharedKey(int index) {
  static const SKeyPair keys[3];
  return keys[index];
}

class ManifestSignature : public testing::Test {
 protected:
  const SKeyPair& first_ = SharedKey(0);
  const SKeyPair& second_ = SharedKey(1);
  const SKeyPair& stranger_ = SharedKey(2);
  const std::string list_ = "{\"version\":7,\"channel\":\"stable\",\"files\":[]}\n";
  std::array<PublicKey, 2> keys_{first_.publicKey, second_.publicKey};

  bool Verify(std::string_view signatureText, const std::string& message) const {
    return VerifyManifestSignature(reinterpret_cast<const std::uint8_t*>(message.data()), message.size(), signatureText,
                                   &keys_);
  }
  bool Verify(std::string_view signatureText) const { return Verify(signatureText, list_); }
  std::string LineBy(const SKeyPair& signer) const { return Base64Of(signer.Sign(list_)); }
};

TEST_F(ManifestSignature, AcceptsOnlyThirdLineValidAndOnlyForSecondKey) {
  const std::string text = LineBy(stranger_) + "\nnot base64 at all\n" + LineBy(second_) + "\n";
  EXPECT_TRUE(Verify(text));

  keys_ = {first_.publicKey, PublicKey{}};
  EXPECT_FALSE(Verify(text));
}

TEST_F(ManifestSignature, TrimsLinesAndIgnoresUnusableOnesButKeepsLooking) {
  const crypto::Ed25519Signature signature = first_.Sign(list_);
  const std::string valid = Base64Of(signature);
  for (const std::string& text : {valid + "\n" + valid, " \t" + valid + " \t \r \r\n", "\r\n\n  \n" + valid + "\n\n"}) {
    EXPECT_TRUE(Verify(text)) << text;
  }
  std::vector<std::uint8_t> longer(signature.begin(), signature.end());
  longer.push_back(0);
  for (const std::string& unusable : {
           valid.substr(0, valid.size() - 1),             // 87 characters
           valid.substr(0, 40) + " " + valid.substr(40),  // inner blank
           Base64Of(longer.data(), longer.size()),
           Base64Of(crypto::Ed25519Signature{}),
           Base64Of(signing_support::WithSPlusGroupOrder(signature)),
       }) {
    EXPECT_FALSE(Verify(unusable)) << unusable;
    EXPECT_TRUE(Verify(unusable + "\n" + valid)) << unusable;
  }
}

TEST_F(ManifestSignature, RefusesMoreThanEightLinesWhateverTheyHold) {
  const std::string valid = LineBy(first_);
  std::string eight;
  for (int i = 0; i < 8; ++i) eight += valid + "\n \n\n";
  EXPECT_TRUE(Verify(eight));
  EXPECT_FALSE(Verify(eight + valid));
  EXPECT_FALSE(Verify(eight + "x"));
}

TEST_F(ManifestSignature, RefusesOtherBytesNoLinesOrNoUsableKey) {
  const std::string text = LineBy(first_) + "\n" + LineBy(second_);
  EXPECT_FALSE(Verify(text, list_ + " "));
  EXPECT_FALSE(Verify(text, list_.substr(0, list_.size() - 1)));
  for (const std::string_view empty : {"", "\n", " \r\n\t\n"}) EXPECT_FALSE(Verify(empty));

  keys_ = {PublicKey{}, PublicKey{}};
  EXPECT_FALSE(Verify(text));
  EXPECT_FALSE(
      VerifyManifestSignature(reinterpret_cast<const std::uint8_t*>(list_.data()), list_.size(), text, nullptr));
}

}  // namespace
