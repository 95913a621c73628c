#include "text/language.h"

#include <cwctype>

namespace text {

std::wstring_view LanguageCode(EPatcherLanguage language) {
  return language == EPatcherLanguage::Arabic ? L"ar" : L"en";
}

EPatcherLanguage LanguageForLocaleName(const std::optional<std::wstring>& localeName, bool defaultToArabic) {
  if (localeName && localeName->size() >= 2 && std::towlower((*localeName)[0]) == L'a' &&
      std::towlower((*localeName)[1]) == L'r') {
    return EPatcherLanguage::Arabic;
  }
  return defaultToArabic ? EPatcherLanguage::Arabic : EPatcherLanguage::English;
}

}  // namespace text
