#include "app/page_snapshot.h"

#include <array>

#include "text/json.h"

namespace {

using text::AppendJsonKey;

// Indexed by phase number; 3 and 6 share names with 0 and 2 on purpose: the
// page does not tell "patch available" from idle, nor "done" from ready.
constexpr std::array<std::string_view, 9> kPhaseNames{
    "idle", "checking", "ready", "idle", "downloading", "verifying", "ready", "error", "maintenance"};

std::string_view NoticeKindName(int kind) {
  switch (kind) {
    case 1:
      return "success";
    case 2:
      return "error";
    default:
      return "info";
  }
}

std::string_view EventModeName(text::EUiEventMode mode) {
  switch (mode) {
    case text::EUiEventMode::Personal:
      return "personal";
    case text::EUiEventMode::Both:
      return "both";
    default:
      return "global";
  }
}

void AppendRaw(std::string& out, std::string_view key, std::string_view raw) {
  AppendJsonKey(out, key);
  out += raw;
}

void AppendQuoted(std::string& out, std::wstring_view value) {
  out += '"';
  text::AppendJsonEscaped(out, value);
  out += '"';
}

void AppendString(std::string& out, std::string_view key, std::wstring_view value) {
  AppendJsonKey(out, key);
  AppendQuoted(out, value);
}

void AppendAsciiString(std::string& out, std::string_view key, std::string_view value) {
  AppendJsonKey(out, key);
  (out += '"').append(value) += '"';
}

void AppendBool(std::string& out, std::string_view key, bool value) { AppendRaw(out, key, value ? "true" : "false"); }

void AppendCount(std::string& out, std::string_view key, std::uint64_t value) {
  AppendJsonKey(out, key);
  text::AppendJsonCount(out, value);
}

void AppendInt(std::string& out, std::string_view key, std::int32_t value) {
  AppendJsonKey(out, key);
  text::AppendJsonInt(out, value);
}

void AppendFraction(std::string& out, std::string_view key, float value) {
  AppendJsonKey(out, key);
  text::AppendJsonFraction(out, value);
}

void AppendNotice(std::string& out, const std::optional<SPageNotice>& notice) {
  if (!notice) return AppendRaw(out, "notice", "null");
  AppendRaw(out, "notice", "{");
  AppendAsciiString(out, "kind", NoticeKindName(notice->kind));
  AppendString(out, "message", notice->message);
  out += '}';
}

void AppendLinks(std::string& out, const text::SUiLinks& links) {
  AppendRaw(out, "links", "{");
  AppendString(out, "website", links.website);
  AppendString(out, "discord", links.discord);
  AppendString(out, "shop", links.shop);
  AppendString(out, "register", links.registration);
  out += '}';
}

void AppendPatchNote(std::string& out, const SPageModel& model) {
  const text::SLauncherUiDocument& document = model.document;
  if (!document.hasPatchNote) return AppendRaw(out, "patchNote", "null");
  AppendRaw(out, "patchNote", "{");
  AppendString(out, "title", document.patchNote.title);
  AppendString(out, "summary", document.patchNote.summary);
  AppendString(out, "coverImage", model.coverImage);
  AppendString(out, "publishedAt", document.patchNote.publishedAt);
  AppendString(out, "url", document.patchNote.url);
  out += '}';
}

void AppendEvent(std::string& out, const text::SUiEvent& event) {
  out += '{';
  AppendString(out, "title", event.title);
  AppendInt(out, "iconId", event.iconId);
  AppendInt(out, "dayOfWeek", event.dayOfWeek);
  AppendInt(out, "startMinutes", event.startMinutes);
  AppendInt(out, "endMinutes", event.endMinutes);
  AppendAsciiString(out, "mode", EventModeName(event.mode));
  AppendInt(out, "activationMinutes", event.activationMinutes);
  out += '}';
}

void AppendFeed(std::string& out, const SPageModel& model) {
  AppendRaw(out, "feed", "{");
  AppendBool(out, "utcClock", model.document.utcClock);
  AppendPatchNote(out, model);
  AppendRaw(out, "events", "[");
  for (const text::SUiEvent& event : model.document.events) {
    if (out.back() != '[') out += ',';
    AppendEvent(out, event);
  }
  out += "]}";
}

}  // namespace

std::string_view PagePhaseName(bool connecting, std::uint32_t phase) {
  if (connecting) return "connecting";
  return phase < kPhaseNames.size() ? kPhaseNames[phase] : "idle";
}

std::string BuildPageSnapshot(const SPageModel& model) {
  std::string out = "{";
  AppendAsciiString(out, "phase", PagePhaseName(model.connecting, model.phase));
  AppendFraction(out, "progress", model.progress);
  AppendString(out, "currentFile", model.currentFile);
  AppendFraction(out, "currentFileProgress", model.currentFileProgress);
  AppendCount(out, "filesDone", model.filesDone);
  AppendCount(out, "filesTotal", model.filesTotal);
  AppendCount(out, "downloadedBytes", model.downloadedBytes);
  AppendCount(out, "totalBytes", model.totalBytes);
  AppendCount(out, "orphanFiles", model.orphanFiles);
  AppendCount(out, "orphanBytes", model.orphanBytes);
  AppendRaw(out, "orphanSample", "[");
  for (const std::wstring& path : model.orphanSample) {
    if (out.back() != '[') out += ',';
    AppendQuoted(out, path);
  }
  out += ']';
  AppendString(out, "status", model.status);
  AppendString(out, "lastError", model.lastError);
  AppendString(out, "version", model.version);
  AppendString(out, "title", model.title);
  AppendString(out, "subtitle", model.subtitle);
  AppendString(out, "patchLabel", model.patchLabel);
  AppendString(out, "playLabel", model.playLabel);
  AppendAsciiString(out, "language", model.language == text::EPatcherLanguage::Arabic ? "ar" : "en");
  AppendBool(out, "canPatch", model.canPatch);
  AppendBool(out, "canPlay", model.canPlay);
  AppendBool(out, "canRepair", model.canRepair);
  AppendNotice(out, model.notice);
  AppendRaw(out, "maintenance", "{");
  AppendBool(out, "active", model.document.maintenanceActive);
  AppendString(out, "text", model.document.maintenanceText);
  out += '}';
  AppendLinks(out, model.document.links);
  AppendFeed(out, model);
  out += '}';
  return out;
}
