#include "patch/patch_state.h"

#include <cwctype>

#include "patch/line_file.h"
#include "text/utf.h"

namespace patch {
namespace {

std::wstring LowerCase(std::wstring_view text) {
  std::wstring lower(text);
  for (wchar_t& c : lower) c = static_cast<wchar_t>(std::towlower(c));
  return lower;
}

void ApplyNumber(std::wstring_view value, std::uint64_t& field) {
  std::uint64_t parsed = 0;
  if (ParseUnsignedDecimal(value, parsed)) field = parsed;
}

void ApplyField(const std::wstring& key, std::wstring_view value, SPatchState& state) {
  if (key == L"installed_build") {
    ApplyNumber(value, state.installedBuild);
  } else if (key == L"language") {
    state.language = LowerCase(value) == L"ar" ? text::EPatcherLanguage::Arabic : text::EPatcherLanguage::English;
  } else if (key == L"channel") {
    state.channel = IsBetaChannel(value) ? L"beta" : L"stable";
  } else if (key == L"manifest_fingerprint") {
    state.manifestFingerprint = value;
  } else if (key == L"seen_version_stable") {
    ApplyNumber(value, state.seenVersionStable);
  } else if (key == L"seen_version_beta") {
    ApplyNumber(value, state.seenVersionBeta);
  } else if (key == L"seen_news_signature") {
    state.seenNewsSignature = value;
  } else if (key == L"seen_events_signature") {
    state.seenEventsSignature = value;
  } else if (key == L"seen_patch_notes_signature") {
    state.seenPatchNotesSignature = value;
  } else if (key == L"attempted_launcher_version") {
    state.attemptedLauncherVersion = value;
  }
}

// Values come partly from the network (the page's news signatures): a line
// break inside one would add a line of its own choosing, read as a later
// value (a lowered rollback floor, say). Line breaks are dropped.
void AppendLine(std::string& out, std::string_view key, std::string_view value) {
  out.append(key).append("=");
  for (const char c : value) {
    if (c != '\r' && c != '\n') out.push_back(c);
  }
  out.append("\n");
}

}  // namespace

bool IsBetaChannel(std::wstring_view channel) { return LowerCase(channel) == L"beta"; }

void ApplyPatchStateLines(const std::vector<std::wstring>& lines, SPatchState& state) {
  for (const std::wstring& line : lines) {
    const size_t equals = line.find(L'=');
    if (equals == std::wstring::npos) continue;
    const std::wstring_view whole(line);
    ApplyField(LowerCase(TrimField(whole.substr(0, equals))), TrimField(whole.substr(equals + 1)), state);
  }
}

std::string FormatPatchState(const SPatchState& state) {
  std::string out;
  AppendLine(out, "installed_build", std::to_string(state.installedBuild));
  AppendLine(out, "language", text::WideToUtf8(text::LanguageCode(state.language)));
  AppendLine(out, "channel", text::WideToUtf8(state.channel));
  AppendLine(out, "manifest_fingerprint", text::WideToUtf8(state.manifestFingerprint));
  AppendLine(out, "seen_version_stable", std::to_string(state.seenVersionStable));
  AppendLine(out, "seen_version_beta", std::to_string(state.seenVersionBeta));
  AppendLine(out, "seen_news_signature", text::WideToUtf8(state.seenNewsSignature));
  AppendLine(out, "seen_events_signature", text::WideToUtf8(state.seenEventsSignature));
  AppendLine(out, "seen_patch_notes_signature", text::WideToUtf8(state.seenPatchNotesSignature));
  AppendLine(out, "attempted_launcher_version", text::WideToUtf8(state.attemptedLauncherVersion));
  return out;
}

}  // namespace patch
