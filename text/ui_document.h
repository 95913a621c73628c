#pragma once
// The launcher UI document ("ui.json" on the patch host): the latest patch
// note, a weekly schedule of in-game events, the community links and the
// maintenance banner. The reader is strict only about the document's shape;
// inside it a bad field is dropped and a bad event skipped.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace text {

// The largest document that is read, from the patch host or by the publisher.
inline constexpr std::size_t kMaxUiDocumentBytes = 1024 * 1024;

enum class EUiEventMode : std::int32_t { Global = 0, Personal = 1, Both = 2 };

struct SUiPatchNote {
  std::wstring title;
  std::wstring summary;
  std::wstring coverImage;   // URL of the cover picture
  std::wstring publishedAt;  // date text, shown by the page as a date
  std::wstring url;          // link behind the read-more button

  bool operator==(const SUiPatchNote&) const = default;
};

struct SUiEvent {
  std::wstring title;
  std::int32_t iconId = 0;        // 0 to 999
  std::int32_t dayOfWeek = 0;     // 0 to 6
  std::int32_t startMinutes = 0;  // minutes after midnight, 0 to 1439
  std::int32_t endMinutes = 0;    // later than startMinutes: an event never crosses midnight
  EUiEventMode mode = EUiEventMode::Global;
  std::int32_t activationMinutes = 0;  // 0 to 1440

  bool operator==(const SUiEvent&) const = default;
};

struct SUiLinks {
  std::wstring website;
  std::wstring discord;
  std::wstring shop;
  std::wstring registration;  // the "register" member

  bool operator==(const SUiLinks&) const = default;
};

struct SLauncherUiDocument {
  bool utcClock = false;  // event times are UTC rather than the player's local clock
  bool hasPatchNote = false;
  SUiPatchNote patchNote;  // left empty unless hasPatchNote
  std::vector<SUiEvent> events;
  SUiLinks links;
  bool maintenanceActive = false;
  std::wstring maintenanceText;

  bool operator==(const SLauncherUiDocument&) const = default;
};

inline constexpr std::size_t kMaxUiEvents = 32;

// Something the reader dropped, cut short or ignored; collected only for
// operators checking a document before they publish it.
struct SUiDocumentNote {
  std::wstring where;  // member path, such as "events[3].timeEnd" or "patchNote"
  std::wstring what;   // what happened to it and why

  bool operator==(const SUiDocumentNote&) const = default;
};

// Reads the whole document. Fails with "Launcher UI document is invalid."
// (and a default `document`) only when the text does not parse as JSON or its
// top level is not an object; every other defect drops the field or event.
// Text fields are trimmed of space, tab, CR and LF and cut to their limit in
// UTF-16 code units, never between the two halves of a surrogate pair, so
// both builds keep the same characters. `notes`, when given, receives one
// entry per defect; it never changes the result.
bool ReadLauncherUiDocument(std::wstring_view text, SLauncherUiDocument& document, std::wstring& errorText,
                            std::vector<SUiDocumentNote>* notes = nullptr);

}  // namespace text
