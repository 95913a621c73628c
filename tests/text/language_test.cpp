#include "text/language.h"

#include <gtest/gtest.h>

namespace {

using text::EPatcherLanguage;
using text::LanguageForLocaleName;

TEST(Language, LocaleNamesBeginningWithArSelectArabicOthersTheConfiguredDefault) {
  const std::optional<std::wstring> arabic[] = {L"ar-SA", L"AR", L"Ar", L"ar_SA.UTF-8", L"ar"};
  const std::optional<std::wstring> others[] = {L"fr-FR", L"a", L"C", L"", L" ar", std::nullopt};
  for (const bool defaultToArabic : {true, false}) {
    const EPatcherLanguage fallback = defaultToArabic ? EPatcherLanguage::Arabic : EPatcherLanguage::English;
    for (const auto& name : arabic) EXPECT_EQ(LanguageForLocaleName(name, defaultToArabic), EPatcherLanguage::Arabic);
    for (const auto& name : others) {
      EXPECT_EQ(LanguageForLocaleName(name, defaultToArabic), fallback) << testing::PrintToString(name);
    }
  }
}

}  // namespace
