// The page protocol without a window: snapshots, commands, the link policy
// and the progress throttle. Runs on both systems.
#include <gtest/gtest.h>

#include <string>

#include "app/link_policy.h"
#include "app/page_command.h"
#include "app/page_snapshot.h"
#include "app/progress_throttle.h"
#include "text/utf.h"

namespace {

TEST(PageSnapshot, DefaultAndFullModelsAreWrittenWholeInKeyOrder) {
  EXPECT_EQ(BuildPageSnapshot({}),
            R"({"phase":"connecting","progress":0,"currentFile":"","currentFileProgress":0,"filesDone":0,)"
            R"("filesTotal":0,"downloadedBytes":0,"totalBytes":0,"orphanFiles":0,"orphanBytes":0,"orphanSample":[],)"
            R"("status":"","lastError":"","version":"","title":"","subtitle":"","patchLabel":"","playLabel":"",)"
            R"("language":"en","canPatch":false,"canPlay":false,"canRepair":false,"notice":null,)"
            R"("maintenance":{"active":false,"text":""},"links":{"website":"","discord":"","shop":"","register":""},)"
            R"("feed":{"utcClock":false,"patchNote":null,"events":[]}})");

  SPageModel model;
  model.connecting = false;
  model.phase = 5;
  model.progress = 0.375f;
  model.currentFile = L"data/\"q\".pak";
  model.filesDone = 2;
  model.filesTotal = 3;
  model.downloadedBytes = 5'000'000'000;
  model.totalBytes = 18'446'744'073'709'551'615u;
  model.orphanFiles = 2;
  model.orphanBytes = 10;
  model.orphanSample = {L"a.txt", L"ü/b.txt"};
  model.status = L"تحديث";
  model.language = text::EPatcherLanguage::Arabic;
  model.canRepair = true;
  model.notice = SPageNotice{5, L"line\nbreak"};
  model.document.maintenanceActive = true;
  model.document.maintenanceText = L"Back soon";
  model.document.links.registration = L"https://r.example";
  model.document.utcClock = true;
  model.document.hasPatchNote = true;
  model.document.patchNote = {L"Title", L"Sum", L"https://cdn.example/c.png", L"2026-11-01", L"https://n.example"};
  model.coverImage = L"https://launcher.vardeni.invalid/media/cover";
  model.document.events = {{L"Raid", 7, 6, 60, 120, text::EUiEventMode::Both, 15},
                           {L"Odd", 1, 0, 0, 1, static_cast<text::EUiEventMode>(7), 0}};
  EXPECT_EQ(text::Utf8ToWide(BuildPageSnapshot(model)),
            text::Utf8ToWide(
                R"({"phase":"verifying","progress":0.375,"currentFile":"data/\"q\".pak","currentFileProgress":0,)"
                R"("filesDone":2,"filesTotal":3,"downloadedBytes":5000000000,"totalBytes":18446744073709551615,)"
                R"("orphanFiles":2,"orphanBytes":10,"orphanSample":["a.txt","ü/b.txt"],"status":"تحديث",)"
                R"("lastError":"","version":"","title":"","subtitle":"","patchLabel":"","playLabel":"",)"
                R"("language":"ar","canPatch":false,"canPlay":false,"canRepair":true,)"
                R"("notice":{"kind":"info","message":"line\nbreak"},"maintenance":{"active":true,"text":"Back soon"},)"
                R"("links":{"website":"","discord":"","shop":"","register":"https://r.example"},)"
                R"("feed":{"utcClock":true,"patchNote":{"title":"Title","summary":"Sum",)"
                R"("coverImage":"https://launcher.vardeni.invalid/media/cover","publishedAt":"2026-11-01",)"
                R"("url":"https://n.example"},"events":[{"title":"Raid","iconId":7,"dayOfWeek":6,"startMinutes":60,)"
                R"("endMinutes":120,"mode":"both","activationMinutes":15},{"title":"Odd","iconId":1,"dayOfWeek":0,)"
                R"("startMinutes":0,"endMinutes":1,"mode":"global","activationMinutes":0}]}})"));
}

TEST(PageSnapshot, PhaseNumbersMapToThePagesNames) {
  const char* const names[] = {"idle",        "checking", "ready", "idle",        "downloading",
                               "verifying",   "ready",    "error", "maintenance", "idle"};
  for (std::uint32_t phase = 0; phase < std::size(names); ++phase) {
    EXPECT_EQ(PagePhaseName(false, phase), names[phase]) << phase;
    EXPECT_EQ(PagePhaseName(true, phase), "connecting");
  }
  EXPECT_EQ(PagePhaseName(false, 4'000'000'000u), "idle");
}

TEST(BridgeCommand, MessagesAreAcceptedOnlyInTheirExactForm) {
  const struct {
    std::string message;
    EBridgeCommand command;  // None: refused
    std::wstring argument;
  } cases[] = {
      {R"({"command":"patch","extra":1})", EBridgeCommand::Patch, L""},
      {R"({"command":"openLog"})", EBridgeCommand::OpenLog, L""},
      {R"({"command":"startResize","edge":"left"})", EBridgeCommand::StartResize, L"left"},
      {R"({"command":"openExternal","url":"x.org"})", EBridgeCommand::OpenExternal, L"x.org"},
      {R"({"command":"Patch"})", EBridgeCommand::None, L""},
      {R"({"command":"openExternal"})", EBridgeCommand::None, L""},
      {R"({"command":"openExternal","url":""})", EBridgeCommand::None, L""},
      {R"({"command":"startResize","edge":7})", EBridgeCommand::None, L""},
      {R"(["patch"])", EBridgeCommand::None, L""},
      {R"("patch")", EBridgeCommand::None, L""},
      {"{\"command\":\"pa\xff\"}", EBridgeCommand::None, L""},
      {"", EBridgeCommand::None, L""},
  };
  for (const auto& c : cases) {
    SBridgeRequest request{EBridgeCommand::Close, L"stale"};
    EXPECT_EQ(ParseBridgeCommand(c.message, request), c.command != EBridgeCommand::None) << c.message;
    EXPECT_EQ(request.command, c.command) << c.message;
    EXPECT_EQ(request.argument, c.argument) << c.message;
  }
  // The length limit counts bytes, valid JSON or not.
  const auto padded = [](std::size_t size) {
    const std::string head = R"({"command":"close","pad":")";
    return head + std::string(size - head.size() - 2, 'x') + "\"}";
  };
  SBridgeRequest request;
  EXPECT_TRUE(ParseBridgeCommand(padded(kMaxCommandBytes), request));
  EXPECT_FALSE(ParseBridgeCommand(padded(kMaxCommandBytes + 1), request));
}

TEST(LinkPolicy, OnlyHttpsAddressesWithoutShellCharactersPass) {
  const struct {
    std::wstring url;
    std::wstring normalized;
    bool allowed;
  } cases[] = {
      {L" \t example.org/news \r\n", L"https://example.org/news", true},
      {L"https://a", L"https://a", true},  // nine characters: the shortest allowed
      {L"https://", L"https://", false},
      {L"HTTPS://EXAMPLE.ORG", L"HTTPS://EXAMPLE.ORG", true},
      {L"http://example.org", L"http://example.org", false},
      {L"javascript:alert(1)", L"https://javascript:alert(1)", true},
      {L"https://a.org/x|calc", L"https://a.org/x|calc", false},
      {L"https://a.org/\"q\"", L"https://a.org/\"q\"", false},
      {L"https://a.org/\x01", L"https://a.org/\x01", false},
      {L" \r\n", L"", false},
      {L"https://" + std::wstring(2040, L'a'), L"https://" + std::wstring(2040, L'a'), true},
      {L"https://" + std::wstring(2041, L'a'), L"https://" + std::wstring(2041, L'a'), false},
  };
  for (const auto& c : cases) {
    const std::wstring normalized = NormalizeExternalLink(c.url);
    EXPECT_EQ(normalized, c.normalized) << text::WideToUtf8(c.url);
    EXPECT_EQ(IsAllowedExternalLink(normalized), c.allowed) << text::WideToUtf8(c.url);
  }
}

TEST(ProgressThrottle, PostsPhaseChangesGapsOfSixteenMillisecondsAndTheFinish) {
  using namespace std::chrono_literals;
  CProgressThrottle throttle;
  const CProgressThrottle::Clock::time_point t0{};
  const struct {
    std::uint32_t phase;
    float fraction;
    std::chrono::milliseconds at;
    bool posted;
  } steps[] = {
      {4, 0.1f, 0ms, true},      {4, 0.2f, 5ms, false},   {4, 0.3f, 15ms, false}, {4, 0.4f, 16ms, true},
      {5, 0.41f, 17ms, true},    {5, 0.5f, 20ms, false},  {5, 0.999f, 21ms, true}, {5, 1.0f, 22ms, true},
      {4, 0.2f, 23ms, true},
  };
  for (const auto& step : steps) {
    EXPECT_EQ(throttle.ShouldPost(step.phase, step.fraction, t0 + step.at), step.posted) << step.at.count();
  }
}

}  // namespace
