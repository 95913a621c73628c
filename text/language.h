#pragma once
// The two interface languages and how the user's locale picks one.

#include <optional>
#include <string>
#include <string_view>

namespace text {

enum class EPatcherLanguage { English = 0, Arabic = 1 };

// "ar" for Arabic, "en" for anything else: the code used in locale file
// names, the state file and towards the page.
std::wstring_view LanguageCode(EPatcherLanguage language);

// Arabic when the locale name, lower-cased, begins with "ar" ("ar-SA",
// "ar_EG.UTF-8", "AR"); otherwise, and when no name could be had, the
// build's default language.
EPatcherLanguage LanguageForLocaleName(const std::optional<std::wstring>& localeName, bool defaultToArabic);

}  // namespace text
