#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "text/json.h"
#include "text/utf.h"

namespace {

using text::CJsonValue;
using text::ParseJson;

bool Parses(std::wstring_view document) {
  CJsonValue value;
  return ParseJson(document, value);
}

CJsonValue MustParse(std::wstring_view document) {
  CJsonValue value;
  EXPECT_TRUE(ParseJson(document, value)) << text::WideToUtf8(document);
  return value;
}

std::wstring Nested(int levels, std::wstring_view open, std::wstring_view inner, std::wstring_view close) {
  std::wstring document;
  for (int i = 0; i < levels; ++i) document += open;
  document += inner;
  for (int i = 0; i < levels; ++i) document += close;
  return document;
}

// Edges of the double range included; a long span takes the conversion's slow path.
TEST(JsonParse, NumberGrammar) {
  const struct {
    std::wstring text;
    bool accepted;
    double value;
  } cases[] = {
      {L"0", true, 0.0},     {L"-0", true, -0.0},    {L"1.5e+3", true, 1500.0}, {L"2E-2", true, 0.02},
      {L"-12.25", true, -12.25}, {L"0.5E-0", true, 0.5}, {L"18446744073709551615", true, 18446744073709551615.0},
      {L"1.7976931348623157e308", true, 1.7976931348623157e308},
      {L"4.9406564584124654e-324", true, 4.9406564584124654e-324},
      {L"0." + std::wstring(300, L'0') + L"1e301", true, 1.0},
      {L"01", false, 0},     {L"+1", false, 0},      {L"1.", false, 0},         {L".5", false, 0},
      {L"1e", false, 0},     {L"-", false, 0},       {L"1e+", false, 0},        {L"-01", false, 0},
      {L"1.e3", false, 0},   {L"0x10", false, 0},    {L"NaN", false, 0},        {L"Infinity", false, 0},
      {L"1e999", false, 0},  {L"-1e999", false, 0},  {L"1e-999", false, 0},     {L"- 1", false, 0},
      {L"1.7976931348623159e308", false, 0},         {L"2e-324", false, 0},  // out of range, rounds to zero
  };
  for (const auto& c : cases) {
    CJsonValue value;
    ASSERT_EQ(ParseJson(c.text, value), c.accepted) << text::WideToUtf8(c.text);
    if (!c.accepted) continue;
    ASSERT_TRUE(value.IsNumber());
    EXPECT_EQ(value.AsNumber(), c.value) << text::WideToUtf8(c.text);
    EXPECT_EQ(std::signbit(value.AsNumber()), std::signbit(c.value)) << text::WideToUtf8(c.text);
  }
}

TEST(JsonParse, LiteralsAndStructures) {
  EXPECT_TRUE(MustParse(L"true").AsBool());
  EXPECT_FALSE(MustParse(L"false").AsBool());
  EXPECT_TRUE(MustParse(L"null").IsNull());
  EXPECT_TRUE(MustParse(L" \t\r\n null \r\n").IsNull());
  const CJsonValue value = MustParse(L" { \"a\" : [ 1 , \"x\" , [ ] , { } ] , \"b\" : { \"c\" : null } } ");
  ASSERT_TRUE(value.IsObject());
  EXPECT_EQ(value.AsObject().size(), 2u);
  const auto& array = value.Find(L"a")->AsArray();
  ASSERT_EQ(array.size(), 4u);
  EXPECT_EQ(array[0].AsNumber(), 1.0);
  EXPECT_EQ(array[1].AsString(), L"x");
  EXPECT_TRUE(array[2].AsArray().empty());
  EXPECT_TRUE(array[3].AsObject().empty());
  EXPECT_TRUE(value.Find(L"b")->Find(L"c")->IsNull());

  EXPECT_EQ(value.Find(L"A"), nullptr);
  EXPECT_EQ(MustParse(L"[\"a\"]").Find(L"a"), nullptr);
  for (const wchar_t* bad : {L"True", L"nul", L"nulll", L"true false", L"", L"   ", L"null\f", L"\vnull", L"[1]]",
                             L"{} {}", L"\u00A0null", L"[1,]", L"{\"a\":1,}", L"[,1]", L"[1 2]", L"{\"a\" 1}", L"{a:1}", L"{1:1}",
                             L"{\"a\":}", L"{,}", L"[", L"{\"a\":1", L"[1,", L"{\"a\"", L"]", L"}"}) {
    EXPECT_FALSE(Parses(bad)) << text::WideToUtf8(bad);
  }
}

TEST(JsonParse, DuplicateKeyKeepsFirstButStillParsesTheRepeat) {
  const CJsonValue value = MustParse(L"{\"a\":1,\"b\":2,\"a\":{\"deep\":[true]}}");
  EXPECT_EQ(value.AsObject().size(), 2u);
  EXPECT_EQ(value.Find(L"a")->AsNumber(), 1.0);
  EXPECT_FALSE(Parses(L"{\"a\":1,\"a\":[1,]}"));
}

TEST(JsonParse, NestingLimitIsSixteenLevels) {
  EXPECT_TRUE(Parses(Nested(16, L"[", L"", L"]")));
  EXPECT_FALSE(Parses(Nested(17, L"[", L"", L"]")));
  EXPECT_TRUE(Parses(Nested(15, L"{\"k\":", L"{}", L"}")));
  EXPECT_FALSE(Parses(Nested(16, L"{\"k\":", L"{}", L"}")));
  // A scalar is a level of its own.
  EXPECT_TRUE(Parses(Nested(15, L"[", L"1", L"]")));
  EXPECT_FALSE(Parses(Nested(16, L"[", L"1", L"]")));
  EXPECT_FALSE(Parses(Nested(16, L"[", L"\"s\"", L"]")));
  // Far deeper input fails without recursing into it.
  EXPECT_FALSE(Parses(Nested(1'000'000, L"[", L"", L"]")));
}

TEST(JsonParse, StringEscapes) {
  EXPECT_EQ(MustParse(L"\"\\u00e9\"").AsString(), L"\u00e9");
  EXPECT_EQ(MustParse(L"\"\\u00C9x\"").AsString(), L"\u00c9x");
  EXPECT_EQ(MustParse(L"\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"").AsString(), L"\"\\/\b\f\n\r\t");
  EXPECT_EQ(MustParse(L"\"\\u0000\"").AsString(), std::wstring(1, L'\0'));
  // Everything else, control characters included, is copied as it is.
  EXPECT_EQ(MustParse(L"\"a\tb\u0001 \u0645/\"").AsString(), L"a\tb\u0001 \u0645/");
  EXPECT_EQ(MustParse(L"\"\"").AsString(), L"");

  for (const wchar_t* bad : {L"\"\\x\"", L"\"\\u00e\"", L"\"\\u00eg\"", L"\"\\U00e9\"", L"\"abc", L"\"abc\\\"",
                             L"\"\\", L"\"\\u12", L"\"\\'\"", L"'a'"}) {
    EXPECT_FALSE(Parses(bad)) << text::WideToUtf8(bad);
  }
}

TEST(JsonParse, SurrogateEscapesGiveTheSameTextOnEveryTarget) {
  EXPECT_EQ(MustParse(L"\"\\ud83d\\ude00\"").AsString(), text::Utf8ToWide("\xF0\x9F\x98\x80"));
  EXPECT_EQ(text::WideToUtf8(MustParse(L"\"\\uD83D\\uDE00!\"").AsString()), "\xF0\x9F\x98\x80!");
}

}  // namespace
