#include "text/ui_document.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "text/json.h"

namespace text {
namespace {

constexpr std::wstring_view kInvalidDocument = L"Launcher UI document is invalid.";

// Limits in characters (UTF-16 code units), applied after trimming.
constexpr std::size_t kTitleLimit = 160;
constexpr std::size_t kSummaryLimit = 600;
constexpr std::size_t kAddressLimit = 2048;
constexpr std::size_t kDateLimit = 40;
constexpr std::size_t kBannerLimit = 600;

constexpr double kMaxIconId = 999;
constexpr double kMaxDayOfWeek = 6;
constexpr double kMaxActivationMinutes = 1440;
constexpr std::size_t kShownValueLimit = 40;

struct SPatchNoteField {
  std::wstring_view key;
  std::size_t limit;
  std::wstring SUiPatchNote::*member;
};
constexpr SPatchNoteField kPatchNoteFields[] = {
    {L"title", kTitleLimit, &SUiPatchNote::title},
    {L"summary", kSummaryLimit, &SUiPatchNote::summary},
    {L"coverImage", kAddressLimit, &SUiPatchNote::coverImage},
    {L"publishedAt", kDateLimit, &SUiPatchNote::publishedAt},
    {L"url", kAddressLimit, &SUiPatchNote::url},
};

struct SLinkField {
  std::wstring_view key;
  std::wstring SUiLinks::*member;
};
constexpr SLinkField kLinkFields[] = {
    {L"website", &SUiLinks::website},
    {L"discord", &SUiLinks::discord},
    {L"shop", &SUiLinks::shop},
    {L"register", &SUiLinks::registration},
};

constexpr std::wstring_view kDocumentMembers[] = {L"timezone", L"patchNote", L"events", L"links", L"maintenance"};
constexpr std::wstring_view kPatchNoteMembers[] = {L"title", L"summary", L"coverImage", L"publishedAt", L"url"};
constexpr std::wstring_view kEventMembers[] = {L"name",    L"iconId", L"dayOfWeek",        L"timeStart",
                                               L"timeEnd", L"mode",   L"activationMinutes"};
constexpr std::wstring_view kLinkMembers[] = {L"website", L"discord", L"shop", L"register"};
constexpr std::wstring_view kMaintenanceMembers[] = {L"active", L"text"};

bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

std::wstring_view Trim(std::wstring_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool IsHighSurrogate(wchar_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(wchar_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

// How many wide characters fit in `limit` UTF-16 code units. On Linux a
// character beyond U+FFFF is one wchar_t worth two units; on Windows it is a
// surrogate pair; either way it is kept or dropped whole.
std::size_t CutPoint(std::wstring_view text, std::size_t limit) {
  std::size_t units = 0;
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t width = 1;
    std::size_t step = 1;
    if (static_cast<std::uint32_t>(text[i]) >> 16 != 0) {
      width = 2;
    } else if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      width = 2;
      step = 2;
    }
    if (units + width > limit) break;
    units += width;
    i += step;
  }
  return i;
}

// A number that is an exact integer from 0 to `maximum`.
bool ReadBoundedInteger(const CJsonValue* value, double maximum, std::int32_t& out) {
  if (value == nullptr || !value->IsNumber()) return false;
  const double number = value->AsNumber();
  if (!(number >= 0 && number <= maximum) || std::floor(number) != number) return false;
  out = static_cast<std::int32_t>(number);
  return true;
}

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// "HH:MM" after trimming, as minutes after midnight.
bool ReadTimeOfDay(const CJsonValue* value, std::int32_t& minutes) {
  if (value == nullptr || !value->IsString()) return false;
  const std::wstring_view text = Trim(value->AsString());
  if (text.size() != 5 || text[2] != L':') return false;
  if (!IsDigit(text[0]) || !IsDigit(text[1]) || !IsDigit(text[3]) || !IsDigit(text[4])) return false;
  const int hours = (text[0] - L'0') * 10 + (text[1] - L'0');
  const int mins = (text[3] - L'0') * 10 + (text[4] - L'0');
  if (hours >= 24 || mins >= 60) return false;
  minutes = hours * 60 + mins;
  return true;
}

EUiEventMode ModeForText(std::wstring_view text) {
  if (text == L"personal") return EUiEventMode::Personal;
  if (text == L"both") return EUiEventMode::Both;
  return EUiEventMode::Global;
}

// A short rendering of a value for a note: the JSON kind, the number, or the
// start of the text in quotes.
std::wstring Describe(const CJsonValue* value) {
  if (value == nullptr) return L"missing";
  switch (value->Kind()) {
    case EJsonKind::Null: return L"null";
    case EJsonKind::Boolean: return value->AsBool() ? L"true" : L"false";
    case EJsonKind::Number: {
      char buffer[32];
      const auto result = std::to_chars(buffer, buffer + sizeof buffer, value->AsNumber());
      return std::wstring(buffer, result.ptr);
    }
    case EJsonKind::String: {
      const std::wstring& text = value->AsString();
      const std::size_t shown = CutPoint(text, kShownValueLimit);
      return L"\"" + text.substr(0, shown) + (shown < text.size() ? L"...\"" : L"\"");
    }
    case EJsonKind::Array: return L"an array";
    case EJsonKind::Object: return L"an object";
  }
  return {};
}

std::wstring MemberPath(std::wstring_view prefix, std::wstring_view key) {
  std::wstring path(prefix);
  if (!path.empty()) path += L'.';
  path += key;
  return path;
}

// One pass over a parsed document. Notes go to the optional sink only; what
// is kept never depends on whether anyone listens.
class CUiDocumentReader {
 public:
  explicit CUiDocumentReader(std::vector<SUiDocumentNote>* notes) : notes_(notes) {}

  void Read(const CJsonValue& root, SLauncherUiDocument& document) {
    NoteUnknownMembers(root, L"", kDocumentMembers);
    document.utcClock = ReadClock(root.Find(L"timezone"));
    ReadPatchNote(root.Find(L"patchNote"), document);
    ReadEvents(root.Find(L"events"), document.events);
    ReadLinks(root.Find(L"links"), document.links);
    ReadMaintenance(root.Find(L"maintenance"), document);
  }

 private:
  void Note(std::wstring where, std::wstring what) {
    if (notes_ != nullptr) notes_->push_back({std::move(where), std::move(what)});
  }

  template <std::size_t N>
  void NoteUnknownMembers(const CJsonValue& object, std::wstring_view prefix, const std::wstring_view (&known)[N]) {
    if (notes_ == nullptr) return;
    std::vector<std::wstring> unknown;
    for (const auto& member : object.AsObject()) {
      if (std::find(std::begin(known), std::end(known), member.first) == std::end(known)) {
        unknown.push_back(member.first);
      }
    }
    std::sort(unknown.begin(), unknown.end());  // the parsed object keeps no order
    for (const std::wstring& key : unknown) Note(MemberPath(prefix, key), L"unknown member; ignored");
  }

  // True when the value is present and is an object; otherwise notes why a
  // present value is ignored.
  bool IsObjectOrNote(const CJsonValue* value, const std::wstring& where) {
    if (value == nullptr) return false;
    if (value->IsObject()) return true;
    Note(where, L"is " + Describe(value) + L", not an object; ignored");
    return false;
  }

  // Absent or not a string gives an empty text; otherwise trimmed and cut.
  std::wstring ReadText(const CJsonValue& object, std::wstring_view key, std::size_t limit, const std::wstring& where) {
    const CJsonValue* value = object.Find(key);
    if (value == nullptr) return {};
    if (!value->IsString()) {
      Note(where, L"is " + Describe(value) + L", not a text; left empty");
      return {};
    }
    const std::wstring_view trimmed = Trim(value->AsString());
    const std::size_t kept = CutPoint(trimmed, limit);
    if (kept < trimmed.size()) Note(where, L"longer than " + std::to_wstring(limit) + L" characters; cut");
    return std::wstring(trimmed.substr(0, kept));
  }

  bool ReadClock(const CJsonValue* value) {
    if (value == nullptr) return false;
    if (value->IsString() && Trim(value->AsString()) == L"UTC") return true;
    Note(L"timezone", L"is " + Describe(value) + L", not \"UTC\"; event times follow the player's local clock");
    return false;
  }

  void ReadPatchNote(const CJsonValue* value, SLauncherUiDocument& document) {
    if (!IsObjectOrNote(value, L"patchNote")) return;
    NoteUnknownMembers(*value, L"patchNote", kPatchNoteMembers);
    SUiPatchNote note;
    for (const SPatchNoteField& field : kPatchNoteFields) {
      note.*field.member = ReadText(*value, field.key, field.limit, MemberPath(L"patchNote", field.key));
    }
    if (note.title.empty()) {
      Note(L"patchNote", L"not shown: its title is missing or empty");
      return;
    }
    document.hasPatchNote = true;
    document.patchNote = std::move(note);
  }

  void ReadEvents(const CJsonValue* value, std::vector<SUiEvent>& events) {
    if (value == nullptr) return;
    if (!value->IsArray()) {
      Note(L"events", L"is " + Describe(value) + L", not an array; ignored");
      return;
    }
    const CJsonArray& elements = value->AsArray();
    std::size_t index = 0;
    for (; index < elements.size() && events.size() < kMaxUiEvents; ++index) {
      const std::wstring where = L"events[" + std::to_wstring(index) + L"]";
      SUiEvent event;
      const std::wstring refusal = ReadEvent(elements[index], where, event);
      if (refusal.empty()) {
        events.push_back(std::move(event));
      } else {
        Note(where, L"skipped: " + refusal);
      }
    }
    if (index < elements.size()) {
      Note(L"events", std::to_wstring(elements.size() - index) + L" more element(s) not read; only the first " +
                          std::to_wstring(kMaxUiEvents) + L" events are kept");
    }
  }

  // Returns why the event is skipped, or an empty text when it is kept.
  std::wstring ReadEvent(const CJsonValue& element, const std::wstring& where, SUiEvent& event) {
    if (!element.IsObject()) return L"it is " + Describe(&element) + L", not an object";
    NoteUnknownMembers(element, where, kEventMembers);
    event.title = ReadText(element, L"name", kTitleLimit, where + L".name");
    if (event.title.empty()) return L"its name is missing or empty";
    const CJsonValue* iconId = element.Find(L"iconId");
    if (!ReadBoundedInteger(iconId, kMaxIconId, event.iconId)) {
      return L"iconId (" + Describe(iconId) + L") must be a whole number from 0 to 999";
    }
    const CJsonValue* dayOfWeek = element.Find(L"dayOfWeek");
    if (!ReadBoundedInteger(dayOfWeek, kMaxDayOfWeek, event.dayOfWeek)) {
      return L"dayOfWeek (" + Describe(dayOfWeek) + L") must be a whole number from 0 to 6";
    }
    const CJsonValue* timeStart = element.Find(L"timeStart");
    if (!ReadTimeOfDay(timeStart, event.startMinutes)) {
      return L"timeStart (" + Describe(timeStart) + L") must be a time from \"00:00\" to \"23:59\"";
    }
    const CJsonValue* timeEnd = element.Find(L"timeEnd");
    if (!ReadTimeOfDay(timeEnd, event.endMinutes)) {
      return L"timeEnd (" + Describe(timeEnd) + L") must be a time from \"00:00\" to \"23:59\"";
    }
    if (event.endMinutes <= event.startMinutes) {
      return L"timeEnd (" + Describe(timeEnd) + L") must be later than timeStart (" + Describe(timeStart) +
             L"); an event cannot run across midnight, split it in two";
    }
    event.mode = ReadMode(element.Find(L"mode"), where + L".mode");
    const CJsonValue* activation = element.Find(L"activationMinutes");
    if (activation != nullptr && !ReadBoundedInteger(activation, kMaxActivationMinutes, event.activationMinutes)) {
      Note(where + L".activationMinutes",
           L"is " + Describe(activation) + L", not a whole number from 0 to 1440; 0 used");
    }
    return {};
  }

  EUiEventMode ReadMode(const CJsonValue* value, const std::wstring& where) {
    if (value == nullptr) return EUiEventMode::Global;
    const std::wstring_view text = value->IsString() ? Trim(value->AsString()) : std::wstring_view();
    if (!value->IsString() || (text != L"global" && text != L"personal" && text != L"both")) {
      Note(where, L"is " + Describe(value) + L", not \"global\", \"personal\" or \"both\"; the event is global");
    }
    return ModeForText(text);
  }

  void ReadLinks(const CJsonValue* value, SUiLinks& links) {
    if (!IsObjectOrNote(value, L"links")) return;
    NoteUnknownMembers(*value, L"links", kLinkMembers);
    for (const SLinkField& field : kLinkFields) {
      links.*field.member = ReadText(*value, field.key, kAddressLimit, MemberPath(L"links", field.key));
    }
  }

  void ReadMaintenance(const CJsonValue* value, SLauncherUiDocument& document) {
    if (!IsObjectOrNote(value, L"maintenance")) return;
    NoteUnknownMembers(*value, L"maintenance", kMaintenanceMembers);
    const CJsonValue* active = value->Find(L"active");
    if (active != nullptr && active->IsBool()) {
      document.maintenanceActive = active->AsBool();
    } else if (active != nullptr) {
      Note(L"maintenance.active", L"is " + Describe(active) + L", not a JSON boolean; maintenance stays off");
    }
    document.maintenanceText = ReadText(*value, L"text", kBannerLimit, L"maintenance.text");
  }

  std::vector<SUiDocumentNote>* notes_;
};

}  // namespace

bool ReadLauncherUiDocument(std::wstring_view text, SLauncherUiDocument& document, std::wstring& errorText,
                            std::vector<SUiDocumentNote>* notes) {
  document = SLauncherUiDocument{};
  CJsonValue root;
  if (!ParseJson(text, root) || !root.IsObject()) {
    errorText = kInvalidDocument;
    return false;
  }
  CUiDocumentReader(notes).Read(root, document);
  errorText.clear();
  return true;
}

}  // namespace text
