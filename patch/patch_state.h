#pragma once
// The facts the patch engine keeps between runs, and their "launcher.state"
// file: one "key=value" line per field, LF-terminated, in field order.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/language.h"

namespace patch {

struct SPatchState {
  std::uint64_t installedBuild = 0;
  text::EPatcherLanguage language = text::EPatcherLanguage::English;
  std::wstring channel = L"stable";  // always exactly "stable" or "beta"
  std::wstring manifestFingerprint;
  std::uint64_t seenVersionStable = 0;  // rollback floor of each channel
  std::uint64_t seenVersionBeta = 0;
  std::wstring seenNewsSignature;
  std::wstring seenEventsSignature;
  std::wstring seenPatchNotesSignature;
  std::wstring attemptedLauncherVersion;

  bool operator==(const SPatchState&) const = default;
};

// True when the channel is "beta" in any case.
bool IsBetaChannel(std::wstring_view channel);

// Applies the file's lines on top of `state`. Lines without "=", unknown keys
// and numbers that do not parse are ignored; keys match in any case and a
// later line wins.
void ApplyPatchStateLines(const std::vector<std::wstring>& lines, SPatchState& state);

// The ten lines of the file, UTF-8.
std::string FormatPatchState(const SPatchState& state);

}  // namespace patch
