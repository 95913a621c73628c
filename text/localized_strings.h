#pragma once
// The native side's status texts and captions, looked up by snake_case key in
// the active table of the chosen language.

#include <filesystem>
#include <string>

#include "text/language.h"
#include "text/locale_file.h"

namespace text {

class CLocalizedStrings {
 public:
  // Rebuilds the tables from "ui/locale/<code>.json" below `launcherFolder`.
  // Never fails: the English file (or else the compiled-in table) is the base;
  // Arabic uses the Arabic file alone, or a copy of the base when that file
  // is missing or broken.
  void Load(EPatcherLanguage language, const std::filesystem::path& launcherFolder);

  // The key's text, or the key itself when the active table lacks it.
  std::wstring Text(const std::wstring& key) const;
  // The key's text, or `fallback` when the active table lacks it.
  std::wstring Text(const std::wstring& key, const std::wstring& fallback) const;

 private:
  StringTable active_;
};

}  // namespace text
