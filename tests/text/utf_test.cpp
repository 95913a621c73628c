#include "text/utf.h"

#include <gtest/gtest.h>

namespace {

using text::AppendUtf16Unit;
using text::Utf8ToWide;
using text::WideToUtf8;

TEST(Utf, RoundTripsArabicAndAstralCharacters) {
  const std::string utf8 = "\xD8\xAA\xD8\xAD\xD8\xAF\xD9\x8A\xD8\xAB \xF0\x9F\x98\x80 e\xCC\x81";
  EXPECT_EQ(WideToUtf8(Utf8ToWide(utf8)), utf8);
  EXPECT_EQ(Utf8ToWide("abc"), L"abc");
  EXPECT_EQ(Utf8ToWide(""), L"");
  EXPECT_EQ(WideToUtf8(L""), "");
  EXPECT_EQ(Utf8ToWide(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
  EXPECT_EQ(WideToUtf8(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
}

TEST(Utf, StrictDecodingRejectsWholeInput) {
  for (const char* bad : {
           "\xC0\xAF",          // overlong "/"
           "\xE0\x80\xAF",      // overlong
           "\xED\xA0\x80",      // encoded high surrogate
           "\xF4\x90\x80\x80",  // past U+10FFFF
           "ok\xE2\x82",        // truncated
           "\x80",              // stray continuation
           "\xFF",
       }) {
    EXPECT_EQ(Utf8ToWide(bad), L"") << "input " << bad;
  }
}

TEST(Utf, SurrogateUnitsPairUpOrBecomeReplacementCharacters) {
  std::wstring pair;
  AppendUtf16Unit(pair, 0xD83D);
  AppendUtf16Unit(pair, 0xDE00);
  EXPECT_EQ(pair, Utf8ToWide("\xF0\x9F\x98\x80"));

  std::wstring lone;
  AppendUtf16Unit(lone, 0xDE00);
  AppendUtf16Unit(lone, 0xD83D);
  lone += L"x";
  EXPECT_EQ(WideToUtf8(lone), "\xEF\xBF\xBD\xEF\xBF\xBDx");
}

}  // namespace
