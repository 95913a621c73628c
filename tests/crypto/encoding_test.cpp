#include <gtest/gtest.h>

#include "crypto/base64.h"

namespace {

using crypto::DecodeBase64;

TEST(Base64, DecodesOnlyTheStrictStandardForm) {
  const struct {
    std::string_view text;
    bool decoded;
    std::string_view bytes;
  } cases[] = {
      {"", true, ""},
      {"TWFu", true, "Man"},
      {"TWE=", true, "Ma"},
      {"TQ==", true, "M"},
      {"+/+/", true, "\xfb\xff\xbf"},
      {"TWF", false, ""},       // length not a multiple of 4
      {"TW=u", false, ""},      // padding inside
      {"T===", false, ""},      // three padding characters
      {"TQ==TWFu", false, ""},  // padding before the end
      {"TWF-", false, ""},      // URL-safe alphabet
      {"TWE\n", false, ""},
      {"TWE\xC3", false, ""},  // non-ASCII byte
      {std::string_view("TW\0u", 4), false, ""},
  };
  for (const auto& c : cases) {
    std::vector<std::uint8_t> bytes{0xAA};
    EXPECT_EQ(DecodeBase64(c.text, bytes), c.decoded) << c.text;
    EXPECT_EQ(bytes, std::vector<std::uint8_t>(c.bytes.begin(), c.bytes.end())) << c.text;
  }
}

}  // namespace
