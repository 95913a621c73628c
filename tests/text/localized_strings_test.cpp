#include "text/localized_strings.h"

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace {

using text::CLocalizedStrings;
using text::EPatcherLanguage;

constexpr const char* kEnglishFile = "ui/locale/en.json";
constexpr const char* kArabicFile = "ui/locale/ar.json";
// "إغلاق", the compiled-in text of "close".
const std::wstring kBuiltinClose = L"\u0625\u063a\u0644\u0627\u0642";

TEST(LocalizedStrings, WithoutLocaleFilesTheCompiledInTableAnswers) {
  testing_support::TempDir launcher;
  for (const EPatcherLanguage language : {EPatcherLanguage::English, EPatcherLanguage::Arabic}) {
    CLocalizedStrings strings;
    strings.Load(language, launcher.path());
    EXPECT_EQ(strings.Text(L"eta"), L"ETA");
    EXPECT_EQ(strings.Text(L"close"), kBuiltinClose);
    EXPECT_EQ(strings.Text(L"no_such_key"), L"no_such_key");
    EXPECT_EQ(strings.Text(L"no_such_key", L"Fallback"), L"Fallback");
  }
}

TEST(LocalizedStrings, EnglishFileReplacesTheCompiledInTable) {
  testing_support::TempDir launcher;
  launcher.Write(kEnglishFile, R"({"close":"Close"})");
  CLocalizedStrings strings;
  strings.Load(EPatcherLanguage::English, launcher.path());
  EXPECT_EQ(strings.Text(L"close"), L"Close");
  // Not merged with the compiled-in table either.
  EXPECT_EQ(strings.Text(L"eta"), L"eta");
}

TEST(LocalizedStrings, ArabicFileStandsAloneWithoutEnglishFilling) {
  testing_support::TempDir launcher;
  launcher.Write(kEnglishFile, R"({"close":"Close","retry":"Retry"})");
  launcher.Write(kArabicFile, "{\"close\":\"\xD8\xA5\xD8\xBA\xD9\x84\xD8\xA7\xD9\x82\"}");
  CLocalizedStrings strings;
  strings.Load(EPatcherLanguage::Arabic, launcher.path());
  EXPECT_EQ(strings.Text(L"close"), kBuiltinClose);
  EXPECT_EQ(strings.Text(L"retry"), L"retry");
  EXPECT_EQ(strings.Text(L"retry", L"Try again"), L"Try again");
}

TEST(LocalizedStrings, BrokenArabicFileFallsBackToTheBaseTable) {
  struct SCase {
    const char* englishFile;  // nullptr: absent
    std::wstring expectedClose;
  };
  const SCase cases[] = {
      {R"({"close":"Close"})", L"Close"},
      {nullptr, kBuiltinClose},
      {R"({"close": 1})", kBuiltinClose},
  };
  for (const SCase& c : cases) {
    testing_support::TempDir launcher;
    if (c.englishFile != nullptr) launcher.Write(kEnglishFile, c.englishFile);
    launcher.Write(kArabicFile, R"({"close": 1})");
    CLocalizedStrings strings;
    strings.Load(EPatcherLanguage::Arabic, launcher.path());
    EXPECT_EQ(strings.Text(L"close"), c.expectedClose) << (c.englishFile ? c.englishFile : "no English file");
  }
}

}  // namespace
