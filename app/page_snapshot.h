#pragma once
// The state snapshot: one JSON object that holds everything the page shows.
// The page replaces its whole state with each one, so the snapshot carries
// every field every time, in a fixed key order and without whitespace; the
// controller compares texts to skip pushes that would change nothing.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/language.h"
#include "text/ui_document.h"

// Notice kinds as the controller queues them.
enum class ENoticeKind { Info = 0, Success = 1, Error = 2 };

struct SPageNotice {
  int kind = 0;  // ENoticeKind; any other number shows as "info"
  std::wstring message;

  bool operator==(const SPageNotice&) const = default;
};

struct SPageModel {
  bool connecting = true;    // before the first synchronisation has finished
  std::uint32_t phase = 0;   // patch::EPatchPhase, or any other number
  float progress = 0.0f;
  std::wstring currentFile;
  float currentFileProgress = 0.0f;
  std::uint64_t filesDone = 0;
  std::uint64_t filesTotal = 0;
  std::uint64_t downloadedBytes = 0;
  std::uint64_t totalBytes = 0;
  std::uint64_t orphanFiles = 0;
  std::uint64_t orphanBytes = 0;
  std::vector<std::wstring> orphanSample;
  std::wstring status;
  std::wstring lastError;
  std::wstring version;
  std::wstring title;
  std::wstring subtitle;
  std::wstring patchLabel;
  std::wstring playLabel;
  text::EPatcherLanguage language = text::EPatcherLanguage::English;
  bool canPatch = false;
  bool canPlay = false;
  bool canRepair = false;
  std::optional<SPageNotice> notice;
  // Maintenance, links and the feed; the cover picture's page address stands
  // in for the document's own, which the page could not load.
  text::SLauncherUiDocument document;
  std::wstring coverImage;
};

// The page's name for a phase: "connecting" while `connecting`, else the
// phase number's name ("idle" for numbers it does not know).
std::string_view PagePhaseName(bool connecting, std::uint32_t phase);

// The snapshot as UTF-8 JSON text.
std::string BuildPageSnapshot(const SPageModel& model);
