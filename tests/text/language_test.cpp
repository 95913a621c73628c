#include "text/language.h"

#include <gtest/gtest.h>

namespace {

using text::EPatcherLanguage;
using text::LanguageForLocaleName;

TEST(Language, LocaleNamesBeginningWithArSelectArabicWhateverTheDefault) {
  for (const wchar_t* name : {L"ar-SA", L"ar-EG", L"AR", L"Ar", L"ar_SA.UTF-8", L"ar"}) {
    for (const bool defaultToArabic : {true, false}) {
      EXPECT_EQ(LanguageForLocaleName(std::wstring(name), defaultToArabic), EPatcherLanguage::Arabic)
          << "locale " << testing::PrintToString(std::wstring(name)) << " default " << defaultToArabic;
    }
  }
}

TEST(Language, OtherNamesAndFailedQueriesSelectTheConfiguredDefault) {
  const std::optional<std::wstring> others[] = {std::wstring(L"fr-FR"), std::wstring(L"en-US"), std::wstring(L"a"),
                                                std::wstring(L"C"),     std::wstring(L""),      std::wstring(L" ar"),
                                                std::nullopt};
  for (const auto& name : others) {
    EXPECT_EQ(LanguageForLocaleName(name, true), EPatcherLanguage::Arabic) << testing::PrintToString(name);
    EXPECT_EQ(LanguageForLocaleName(name, false), EPatcherLanguage::English) << testing::PrintToString(name);
  }
}

}  // namespace
