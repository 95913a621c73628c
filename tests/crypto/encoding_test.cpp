#include <gtest/gtest.h>

#include "crypto/base64.h"
#include "crypto/hex.h"

namespace {

using crypto::DecodeBase64;

std::vector<std::uint8_t> Bytes(std::string_view text) { return {text.begin(), text.end()}; }

TEST(Hex, WritesLowerCaseHighNibbleFirst) {
  const std::uint8_t bytes[] = {0x00, 0x09, 0x0a, 0x7f, 0x80, 0xc3, 0xff};
  EXPECT_EQ(crypto::ToLowerHex(bytes, sizeof bytes), L"00090a7f80c3ff");
  EXPECT_EQ(crypto::ToLowerHex(bytes, 0), L"");
}

TEST(Base64, DecodesStandardForms) {
  const struct {
    std::string_view text;
    std::string_view bytes;
  } cases[] = {
      {"", ""},
      {"TWFu", "Man"},
      {"TWE=", "Ma"},
      {"TQ==", "M"},
      {"+/+/", "\xfb\xff\xbf"},
      {"AAECAwQFBgcICQ==", std::string_view("\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09", 10)},
  };
  for (const auto& c : cases) {
    std::vector<std::uint8_t> bytes{0xAA};
    EXPECT_TRUE(DecodeBase64(c.text, bytes)) << c.text;
    EXPECT_EQ(bytes, Bytes(c.bytes)) << c.text;
  }
}

TEST(Base64, RefusesAnythingOutsideTheStrictForm) {
  const std::string_view refused[] = {
      "TWF",       // length not a multiple of 4
      "TW=u",      // padding inside
      "T===",      // three padding characters
      "TQ==TWFu",  // padding before the end
      "TWF-",      // URL-safe alphabet
      "TW u",      // inner blank
      "TWE\n",     //
      "TWE\xC3",   // non-ASCII byte
      std::string_view("TW\0u", 4),
  };
  for (const std::string_view text : refused) {
    std::vector<std::uint8_t> bytes{0xAA};
    EXPECT_FALSE(DecodeBase64(text, bytes)) << text;
    EXPECT_TRUE(bytes.empty()) << text;
  }
}

}  // namespace
