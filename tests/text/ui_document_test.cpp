#include "text/ui_document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "text/utf.h"

namespace {

using text::EUiEventMode;
using text::ReadLauncherUiDocument;
using text::SLauncherUiDocument;
using text::SUiDocumentNote;

SLauncherUiDocument ReadOk(std::wstring_view json) {
  SLauncherUiDocument document;
  std::wstring error = L"stale";
  EXPECT_TRUE(ReadLauncherUiDocument(json, document, error)) << text::WideToUtf8(json);
  EXPECT_EQ(error, L"");
  return document;
}

using SEventChanges = std::vector<std::pair<std::wstring, std::wstring>>;

// A valid event as JSON with members replaced or added by `changes` (member
// name, raw JSON value); an empty value leaves the member out.
std::wstring Event(const SEventChanges& changes = {}) {
  SEventChanges members = {{L"name", L"\"Boss\""}, {L"iconId", L"7"}, {L"dayOfWeek", L"3"},
                           {L"timeStart", L"\"20:00\""}, {L"timeEnd", L"\"21:30\""}};
  for (const auto& change : changes) {
    auto member = std::find_if(members.begin(), members.end(), [&](const auto& m) { return m.first == change.first; });
    if (member == members.end()) member = members.insert(members.end(), {change.first, L""});
    member->second = change.second;
  }
  std::wstring json = L"{";
  for (const auto& [key, value] : members) {
    if (value.empty()) continue;
    if (json.size() > 1) json += L',';
    json += L"\"" + key + L"\":" + value;
  }
  return json + L"}";
}

std::wstring DocumentWithEvents(const std::wstring& elements) { return L"{\"events\":[" + elements + L"]}"; }

TEST(UiDocument, FailsOnlyOnUnparsableTextOrNonObjectTopLevel) {
  for (const wchar_t* json : {L"", L"[]", L"\"ui\"", L"null", L"{", L"{\"a\":1,}", L"{} {}"}) {
    SLauncherUiDocument document;
    document.utcClock = true;
    std::wstring error;
    EXPECT_FALSE(ReadLauncherUiDocument(json, document, error)) << text::WideToUtf8(json);
    EXPECT_EQ(error, L"Launcher UI document is invalid.");
    EXPECT_EQ(document, SLauncherUiDocument{});
  }
  EXPECT_EQ(ReadOk(L" {} "), SLauncherUiDocument{});
  EXPECT_TRUE(ReadOk(L"{\"timezone\":\" UTC\\t\"}").utcClock);
  // Wrong kinds everywhere still read: each member is dropped on its own.
  EXPECT_EQ(ReadOk(L"{\"timezone\":1,\"patchNote\":[],\"events\":{},\"links\":\"x\",\"maintenance\":true}"),
            SLauncherUiDocument{});
}

TEST(UiDocument, PatchNoteNeedsANonEmptyTitle) {
  const SLauncherUiDocument shown = ReadOk(
      LR"({"patchNote":{"title":"  Patch 42 ","summary":"Fixes","coverImage":"https://x/c.png",)"
      LR"("publishedAt":"2024-05-01","url":"https://x/n","extra":1}})");
  EXPECT_TRUE(shown.hasPatchNote);
  EXPECT_EQ(shown.patchNote,
            (text::SUiPatchNote{L"Patch 42", L"Fixes", L"https://x/c.png", L"2024-05-01", L"https://x/n"}));

  for (const wchar_t* json : {LR"({"patchNote":{"title":" \r\n"}})", LR"({"patchNote":{"title":42,"summary":"s"}})"}) {
    const SLauncherUiDocument hidden = ReadOk(json);
    EXPECT_FALSE(hidden.hasPatchNote) << text::WideToUtf8(json);
    EXPECT_EQ(hidden.patchNote, text::SUiPatchNote{});
  }
}

// One character over each limit, and two events over the count limit; every cut is noted.
TEST(UiDocument, TextsAreTrimmedAndCutToTheirLimitsAndEveryCutIsNoted) {
  const std::wstring longAddress(2049, L'u');
  std::wstring events;
  for (int i = 0; i < 34; ++i) events += (i ? L"," : L"") + Event();
  const std::wstring json =
      L"{\"patchNote\":{\"title\":\"" + std::wstring(161, L'T') + L"\",\"summary\":\"" + std::wstring(601, L's') +
      L"\",\"publishedAt\":\"" + std::wstring(41, L'd') + L"\",\"url\":\"" + longAddress +
      L"\"},\"links\":{\"website\":\"" + longAddress + L"\",\"register\":\" r \"},\"maintenance\":{\"text\":\"" +
      std::wstring(601, L'm') + L"\"},\"events\":[" + events + L"]}";
  std::vector<SUiDocumentNote> notes;
  SLauncherUiDocument document;
  std::wstring error;
  ASSERT_TRUE(ReadLauncherUiDocument(json, document, error, &notes));
  EXPECT_EQ(document.patchNote.title, std::wstring(160, L'T'));
  EXPECT_EQ(document.patchNote.summary.size(), 600u);
  EXPECT_EQ(document.patchNote.publishedAt.size(), 40u);
  EXPECT_EQ(document.patchNote.url.size(), 2048u);
  EXPECT_EQ(document.links.website.size(), 2048u);
  EXPECT_EQ(document.links.registration, L"r");
  EXPECT_EQ(document.maintenanceText.size(), 600u);
  EXPECT_EQ(document.events.size(), text::kMaxUiEvents);
  const std::vector<SUiDocumentNote> expected = {
      {L"patchNote.title", L"longer than 160 characters; cut"},
      {L"patchNote.summary", L"longer than 600 characters; cut"},
      {L"patchNote.publishedAt", L"longer than 40 characters; cut"},
      {L"patchNote.url", L"longer than 2048 characters; cut"},
      {L"events", L"2 more element(s) not read; only the first 32 events are kept"},
      {L"links.website", L"longer than 2048 characters; cut"},
      {L"maintenance.text", L"longer than 600 characters; cut"},
  };
  EXPECT_EQ(notes, expected);
}

TEST(UiDocument, CutNeverSplitsACharacterBeyondTheBasicPlane) {
  // 159 units then a two-unit emoji: the emoji does not fit in 160 and goes whole.
  const std::wstring title = std::wstring(159, L'a') + L"\\ud83d\\ude00" + L"b";
  const SLauncherUiDocument cut = ReadOk(L"{\"patchNote\":{\"title\":\"" + title + L"\"}}");
  EXPECT_EQ(text::WideToUtf8(cut.patchNote.title), std::string(159, 'a'));

  const std::wstring fits = std::wstring(158, L'a') + L"\\ud83d\\ude00" + L"b";
  const SLauncherUiDocument kept = ReadOk(L"{\"patchNote\":{\"title\":\"" + fits + L"\"}}");
  EXPECT_EQ(text::WideToUtf8(kept.patchNote.title), std::string(158, 'a') + "\xF0\x9F\x98\x80");
}

TEST(UiDocument, SkipsEventsThatBreakARule) {
  const SEventChanges skipping[] = {
      {{L"name", L""}},    {{L"name", L"\"  \""}},        {{L"iconId", L"1000"}},         {{L"iconId", L"-1"}},
      {{L"iconId", L"3.5"}}, {{L"iconId", L"\"7\""}},     {{L"dayOfWeek", L"7"}},         {{L"timeStart", L"\"9:00\""}},
      {{L"timeStart", L"\"24:00\""}}, {{L"timeStart", L"\"12:60\""}}, {{L"timeEnd", L"\"21:30:00\""}},
      {{L"timeEnd", L"\"20:00\""}}, {{L"timeStart", L"\"22:00\""}, {L"timeEnd", L"\"02:00\""}},
  };
  for (const SEventChanges& changes : skipping) {
    const std::wstring event = Event(changes);
    EXPECT_TRUE(ReadOk(DocumentWithEvents(event)).events.empty()) << text::WideToUtf8(event);
  }
  EXPECT_TRUE(ReadOk(DocumentWithEvents(L"1,\"event\",[],null")).events.empty());
}

// Each row changes the valid event, which must then read back whole: the edges
// of the rules are kept, and a mode or an activation time that breaks its rule
// falls back to its default instead of dropping the event.
TEST(UiDocument, KeepsEventsAtTheEdgesOfTheRulesAndDefaultsABadModeOrActivation) {
  const auto boss = [](EUiEventMode mode, std::int32_t activation) {
    return text::SUiEvent{L"Boss", 7, 3, 1200, 1290, mode, activation};
  };
  const std::pair<SEventChanges, text::SUiEvent> cases[] = {
      {{{L"name", L"\"all day\""}, {L"iconId", L"0"}, {L"dayOfWeek", L"0"}, {L"timeStart", L"\"00:00\""},
        {L"timeEnd", L"\"23:59\""}, {L"activationMinutes", L"30"}},
       {L"all day", 0, 0, 0, 1439, EUiEventMode::Global, 30}},
      {{{L"iconId", L"999"}, {L"dayOfWeek", L"6"}, {L"timeStart", L"\" 09:05\""}, {L"timeEnd", L"\"09:06 \""},
        {L"mode", L"\"both\""}, {L"activationMinutes", L"1440"}},
       {L"Boss", 999, 6, 545, 546, EUiEventMode::Both, 1440}},
      {{{L"mode", L"\" personal \""}, {L"activationMinutes", L"1441"}}, boss(EUiEventMode::Personal, 0)},
      {{{L"mode", L"\"Personal\""}, {L"activationMinutes", L"-5"}}, boss(EUiEventMode::Global, 0)},
      {{{L"mode", L"1"}, {L"activationMinutes", L"2.5"}}, boss(EUiEventMode::Global, 0)},
      {{{L"mode", L"\"global\""}, {L"activationMinutes", L"\"30\""}}, boss(EUiEventMode::Global, 0)},
  };
  for (const auto& [changes, expected] : cases) {
    const std::wstring event = Event(changes);
    const SLauncherUiDocument document = ReadOk(DocumentWithEvents(event));
    ASSERT_EQ(document.events.size(), 1u) << text::WideToUtf8(event);
    EXPECT_EQ(document.events[0], expected) << text::WideToUtf8(event);
  }
}

TEST(UiDocument, NotesExplainEveryDropWithoutChangingTheResult) {
  const std::wstring document =
      LR"({"timezone":"utc","motd":"hi","patchNote":{"summary":"s"},"links":{"website":5},)"
      LR"("maintenance":{"active":"yes"},"events":[3,)" +
      Event({{L"iconId", L"1000"}}) + L"," + Event({{L"timeStart", L"\"22:00\""}, {L"timeEnd", L"\"02:00\""}}) +
      L"," + Event({{L"mode", L"\"persnal\""}, {L"activationMinutes", L"-1"}}) + L"]}";
  std::vector<SUiDocumentNote> notes;
  SLauncherUiDocument withNotes;
  std::wstring error;
  ASSERT_TRUE(ReadLauncherUiDocument(document, withNotes, error, &notes));
  EXPECT_EQ(withNotes, ReadOk(document));
  EXPECT_FALSE(withNotes.utcClock);
  EXPECT_FALSE(withNotes.maintenanceActive);

  const std::vector<SUiDocumentNote> expected = {
      {L"motd", L"unknown member; ignored"},
      {L"timezone", L"is \"utc\", not \"UTC\"; event times follow the player's local clock"},
      {L"patchNote", L"not shown: its title is missing or empty"},
      {L"events[0]", L"skipped: it is 3, not an object"},
      {L"events[1]", L"skipped: iconId (1000) must be a whole number from 0 to 999"},
      {L"events[2]", L"skipped: timeEnd (\"02:00\") must be later than timeStart (\"22:00\"); an event cannot run "
                     L"across midnight, split it in two"},
      {L"events[3].mode", L"is \"persnal\", not \"global\", \"personal\" or \"both\"; the event is global"},
      {L"events[3].activationMinutes", L"is -1, not a whole number from 0 to 1440; 0 used"},
      {L"links.website", L"is 5, not a text; left empty"},
      {L"maintenance.active", L"is \"yes\", not a JSON boolean; maintenance stays off"},
  };
  EXPECT_EQ(notes, expected);
}

}  // namespace
