#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "text/json.h"
#include "text/utf.h"

namespace {

using text::AppendJsonCount;
using text::AppendJsonEscaped;
using text::AppendJsonFraction;
using text::AppendJsonInt;
using text::AppendJsonKey;

std::string Escaped(std::wstring_view value) {
  std::string out;
  AppendJsonEscaped(out, value);
  return out;
}

std::string Fraction(float value) {
  std::string out;
  AppendJsonFraction(out, value);
  return out;
}

TEST(JsonWrite, EscapingTable) {
  const struct {
    std::wstring input;
    std::string output;
  } cases[] = {
      {L"\t", "\\t"},
      {L"\"", "\\\""},
      {L"\\", "\\\\"},
      {L"\b\f\n\r", "\\b\\f\\n\\r"},
      {L"\u0001", "\\u0001"},
      {L"\u001f\u000b", "\\u001F\\u000B"},
      {std::wstring(1, L'\0'), "\\u0000"},
      {L"\u007f", "\x7F"},
      {L"a/b\u00e9\u0639", "a/b\xC3\xA9\xD8\xB9"},
      {text::Utf8ToWide("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80"},
  };
  for (const auto& c : cases) EXPECT_EQ(Escaped(c.input), c.output) << c.output;
  // A lone surrogate read from an escape is written as the replacement character.
  text::CJsonValue value;
  ASSERT_TRUE(text::ParseJson(L"\"a\\ud800b\"", value));
  EXPECT_EQ(Escaped(value.AsString()), "a\xEF\xBF\xBD" "b");
}

TEST(JsonWrite, FractionsAreShortestPlainDecimals) {
  const struct {
    float value;
    const char* text;
  } cases[] = {
      {0.0f, "0"},
      {1.0f, "1"},
      {0.1f, "0.1"},
      {1.0f / 3.0f, "0.33333334"},
      {0.999999f, "0.999999"},
      {1e-7f, "0.0000001"},
      {3e10f, "30000001024"},
      {std::numeric_limits<float>::quiet_NaN(), "0"},
      {std::numeric_limits<float>::infinity(), "0"},
      {-std::numeric_limits<float>::infinity(), "0"},
      {-0.5f, "-0.5"},
  };
  for (const auto& c : cases) EXPECT_EQ(Fraction(c.value), c.text) << c.text;
}

TEST(JsonWrite, FractionsReadBackExactlyAcrossTheFloatRange) {
  const float values[] = {std::numeric_limits<float>::denorm_min(), -std::numeric_limits<float>::denorm_min(),
                          std::numeric_limits<float>::min(),        std::numeric_limits<float>::max(),
                          0.1234567f,                               16777217.0f,
                          123456.7f,                                1e-30f};
  for (const float value : values) {
    const std::string written = Fraction(value);
    EXPECT_EQ(written.find_first_of("eE"), std::string::npos) << written;
    text::CJsonValue parsed;
    ASSERT_TRUE(text::ParseJson(text::Utf8ToWide(written), parsed)) << written;
    EXPECT_EQ(static_cast<float>(parsed.AsNumber()), value) << written;
  }
}

TEST(JsonWrite, IntegersAtTheirLimits) {
  std::string out;
  AppendJsonCount(out, std::numeric_limits<std::uint64_t>::max());
  AppendJsonInt(out, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(out, "18446744073709551615-2147483648");
}

TEST(JsonWrite, CommaOnlyWhenTheLastByteIsNotAnOpener) {
  const struct {
    const char* before;
    const char* after;
  } cases[] = {
      {"{", "{\"k\":"}, {"[", "[\"k\":"}, {"{\"a\":1", "{\"a\":1,\"k\":"},
      {"{\"a\":[]", "{\"a\":[],\"k\":"}, {"", "\"k\":"},
  };
  for (const auto& c : cases) {
    std::string out = c.before;
    AppendJsonKey(out, "k");
    EXPECT_EQ(out, c.after);
  }
}

}  // namespace
