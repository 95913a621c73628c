#include "text/localized_strings.h"

#include "text/builtin_strings.h"

namespace text {
namespace {

std::filesystem::path LocaleFilePath(const std::filesystem::path& launcherFolder, EPatcherLanguage language) {
  return launcherFolder / L"ui" / L"locale" / (std::wstring(LanguageCode(language)) + L".json");
}

}  // namespace

void CLocalizedStrings::Load(EPatcherLanguage language, const std::filesystem::path& launcherFolder) {
  // Load errors are deliberately dropped: a missing or broken file only
  // means a fallback table, never a message to the user.
  std::wstring ignoredError;
  StringTable base;
  if (!LoadLocaleFile(LocaleFilePath(launcherFolder, EPatcherLanguage::English), base, ignoredError)) {
    base = BuiltinStringTable();
  }
  if (language != EPatcherLanguage::Arabic) {
    active_ = std::move(base);
    return;
  }
  // Not merged with English: a key the Arabic file lacks falls to the
  // lookup's own fallback rather than showing English in an Arabic window.
  if (!LoadLocaleFile(LocaleFilePath(launcherFolder, EPatcherLanguage::Arabic), active_, ignoredError)) {
    active_ = std::move(base);
  }
}

std::wstring CLocalizedStrings::Text(const std::wstring& key) const { return Text(key, key); }

std::wstring CLocalizedStrings::Text(const std::wstring& key, const std::wstring& fallback) const {
  const auto found = active_.find(key);
  return found != active_.end() ? found->second : fallback;
}

}  // namespace text
