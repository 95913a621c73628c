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

// Each case: the files present (nullptr: absent), then what "close" and
// "eta" read. A locale file replaces the compiled-in table whole; a broken
// Arabic file falls back to English, and a broken English one to the table,
// which also answers when there are no files. A key no table knows reads as
// itself or as the caller's fallback.
TEST(LocalizedStrings, LocaleFilesReplaceTheBaseTableWhole) {
  const struct {
    EPatcherLanguage language;
    const char* english;
    const char* arabic;
    std::wstring close;
    std::wstring eta;
  } cases[] = {
      {EPatcherLanguage::English, nullptr, nullptr, kBuiltinClose, L"ETA"},
      {EPatcherLanguage::Arabic, nullptr, nullptr, kBuiltinClose, L"ETA"},
      {EPatcherLanguage::English, R"({"close":"Close"})", nullptr, L"Close", L"eta"},
      {EPatcherLanguage::Arabic, R"({"close":"Close","eta":"E"})", "{\"close\":\"\xD8\xA5\xD8\xBA\xD9\x84\xD8\xA7\xD9\x82\"}",
       kBuiltinClose, L"eta"},
      {EPatcherLanguage::Arabic, R"({"close":"Close"})", R"({"close": 1})", L"Close", L"eta"},
      {EPatcherLanguage::Arabic, nullptr, R"({"close": 1})", kBuiltinClose, L"ETA"},
      {EPatcherLanguage::Arabic, R"({"close": 1})", R"({"close": 1})", kBuiltinClose, L"ETA"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    testing_support::TempDir launcher;
    if (c.english != nullptr) launcher.Write(kEnglishFile, c.english);
    if (c.arabic != nullptr) launcher.Write(kArabicFile, c.arabic);
    CLocalizedStrings strings;
    strings.Load(c.language, launcher.path());
    EXPECT_EQ(strings.Text(L"close"), c.close);
    EXPECT_EQ(strings.Text(L"eta"), c.eta);
    EXPECT_EQ(strings.Text(L"no_such_key"), L"no_such_key");
    EXPECT_EQ(strings.Text(L"no_such_key", L"Fallback"), L"Fallback");
  }
}

}  // namespace
