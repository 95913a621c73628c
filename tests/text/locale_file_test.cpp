#include "text/locale_file.h"

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

using text::ParseLocaleObject;
using text::StringTable;

TEST(LocaleFile, ReadsFlatObjectsOfStrings) {
  struct SCase {
    const char* input;
    StringTable expected;
  };
  const SCase cases[] = {
      {"{}", {}},
      {" \t\r\n{ \n } trailing bytes are not examined", {}},
      {"{\"patch\":\"Patch\",\"eta\" : \"ETA\"}", {{L"patch", L"Patch"}, {L"eta", L"ETA"}}},
      {"{\"a\":\"first\",\"a\":\"second\"}", {{L"a", L"first"}}},
      {"{\"esc\":\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"}", {{L"esc", L"\"\\/\b\f\n\r\t"}}},
      {"{\"u\":\"\\u00e9\\u00C9\"}", {{L"u", L"\u00e9\u00c9"}}},
      // Raw UTF-8 Arabic passes through unchanged.
      {"{\"close\":\"\xD8\xA5\xD8\xBA\xD9\x84\xD8\xA7\xD9\x82\"}", {{L"close", L"\u0625\u063a\u0644\u0627\u0642"}}},
      // Each escape of a surrogate pair is converted alone: two replacement characters.
      {"{\"pair\":\"\\ud83d\\ude00\"}", {{L"pair", L"\uFFFD\uFFFD"}}},
      // Invalid UTF-8 inside a string makes that string empty.
      {"{\"bad\":\"x\xFFy\"}", {{L"bad", L""}}},
  };
  for (const SCase& c : cases) {
    StringTable table{{L"stale", L"entry"}};
    EXPECT_TRUE(ParseLocaleObject(c.input, table)) << c.input;
    EXPECT_EQ(table, c.expected) << c.input;
  }
}

TEST(LocaleFile, RejectsTheWholeObjectOnAnyFault) {
  for (const char* input : {
           "", "[]", "{\"a\":\"b\",\"patch\": true}", "{\"patch\": null}", "{\"patch\": {\"x\":\"y\"}}",
           "{\"a\":\"b\",}", "{\"a\" \"b\"}", "{a:\"b\"}", "{\"a\":\"b\"", "{\"a\":\"\\u12g4\"}", "{'a':'b'}",
       }) {
    StringTable table{{L"stale", L"entry"}};
    EXPECT_FALSE(ParseLocaleObject(input, table)) << input;
    EXPECT_TRUE(table.empty()) << input;
  }
}

TEST(LocaleFile, LoadReportsTheExactFailureTexts) {
  testing_support::TempDir dir;
  StringTable table;
  std::wstring error;

  EXPECT_FALSE(text::LoadLocaleFile(dir.path() / "missing.json", table, error));
  EXPECT_EQ(error, L"Could not open locale file.");

  EXPECT_FALSE(text::LoadLocaleFile(dir.Write("numeric.json", "{\"patch\": 1}"), table, error));
  EXPECT_EQ(error, L"Locale JSON could not be parsed.");
  EXPECT_TRUE(table.empty());

  EXPECT_TRUE(text::LoadLocaleFile(dir.Write("good.json", "{\"patch\":\"Patch\"}"), table, error));
  EXPECT_EQ(error, L"");
  EXPECT_EQ(table, (StringTable{{L"patch", L"Patch"}}));
}

}  // namespace
