// CApp against the real engine and the test servers' nginx, in a window that
// records what it is asked and runs posted messages on the test thread, as a
// UI thread would. Each test walks one story.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <fstream>

#include "app/app_controller.h"
#include "log/log.h"
#include "platform/path_text.h"
#include "platform/tick_count.h"
#include "tests/app/scoped_environment.h"
#include "tests/launch/probe_support.h"
#include "tests/sync/sync_test_support.h"
#include "text/json.h"
#include "text/utf.h"
#include "ui/media_registry.h"
#include "ui/page_origin.h"

namespace {

namespace fs = std::filesystem;
using sync_tests::SGameFile;
using testing_support::PatternBytes;

// A member of a snapshot (or a member of that member) as text; "null" for null.
std::wstring Field(const std::string& snapshot, std::wstring_view member, std::wstring_view inner = {}) {
  text::CJsonValue root;
  if (!text::ParseJson(text::Utf8ToWide(snapshot), root)) return L"<unparsable>";
  const text::CJsonValue* value = root.Find(member);
  if (value != nullptr && !inner.empty()) value = value->Find(inner);
  if (value == nullptr) return L"<absent>";
  if (value->IsString()) return value->AsString();
  if (value->IsBool()) return value->AsBool() ? L"true" : L"false";
  return value->IsNull() ? L"null" : L"<value>";
}

// Records every call as a line of text and runs posted messages on the test
// thread, as a UI thread would.
class CRecordingWindow final : public CAppWindow {
 public:
  void PostAppMessage(EAppMessage message) override {
    const std::lock_guard lock(mutex_);
    posted.push_back(message);
    changed_.notify_all();
  }
  void PostClose() override { Record(L"close"); }
  void StartTimer(std::uint32_t periodMs) override { Record(L"timer " + std::to_wstring(periodMs)); }
  void StopTimer() override { Record(L"timer off"); }
  void Minimize() override { Record(L"minimize"); }
  void BeginMoveOrResize(EWindowGrip grip) override { Record(L"grip " + std::to_wstring(int(grip))); }
  void ShowErrorBox(const std::wstring& text) override { Record(L"error box " + text); }
  bool OpenUrl(const std::wstring& url) override { return Record(L"open " + url), !url.ends_with(L"unopenable"); }
  void OpenFolder(const std::wstring& folder) override { Record(L"folder " + folder); }
  void RevealFile(const std::wstring& file) override { Record(L"reveal " + file); }
  bool CreatePage(const std::wstring& userDataFolder, SPageCallbacks callbacks, std::wstring&) override {
    page = std::move(callbacks);
    return !userDataFolder.empty();
  }
  void PostToPage(const std::string& utf8Text) override { pushed.push_back(utf8Text); }
  void ClosePage() override { Record(L"page closed"); }

  bool Called(std::wstring_view call) {
    const std::lock_guard lock(mutex_);
    return std::ranges::find(calls, call) != calls.end();
  }

  // Runs posted messages until `done` holds with none left; false after a minute without it.
  template <typename Done>
  bool RunUntil(CApp& app, Done done) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    std::unique_lock lock(mutex_);
    for (;;) {
      while (!posted.empty()) {
        const EAppMessage message = posted.front();
        posted.pop_front();
        lock.unlock();
        app.OnAppMessage(message);
        lock.lock();
      }
      lock.unlock();
      if (done()) return true;
      lock.lock();
      if (std::chrono::steady_clock::now() > giveUp) return false;
      changed_.wait_for(lock, std::chrono::milliseconds(20), [&] { return !posted.empty(); });
    }
  }

  std::wstring Last(std::wstring_view member, std::wstring_view inner = {}) const {
    return pushed.empty() ? L"<none>" : Field(pushed.back(), member, inner);
  }

  std::deque<EAppMessage> posted;
  std::vector<std::wstring> calls;
  std::vector<std::string> pushed;
  SPageCallbacks page;

 private:
  void Record(std::wstring call) {
    const std::lock_guard lock(mutex_);
    calls.push_back(std::move(call));
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
};

class ControllerTest : public sync_tests::CSyncTest {
 protected:
  void SetUp() override {
    CSyncTest::SetUp();
    config_.gameFolder = game_.wide();
    // Named for these tests alone: other tests start probes as "vardeni2.exe",
    // and a running game would hold the patch back.
    config_.gameExecutable = L"ctl-game.exe";
    logging::OpenLog(runtime_.wide(), L"", L"");
  }
  void TearDown() override { logging::OpenLog(L"", L"", L""); }

  // Release files besides the game executable, which the probe stands in for.
  static std::vector<SGameFile> ContentFiles() {
    return {{"data/world.pak", PatternBytes(400000, 2)}, {"bin/sound.dll", PatternBytes(700, 3)}};
  }

  static sync_tests::SRelease Release(std::vector<SGameFile> files, std::uint64_t version = 42) {
    sync_tests::SRelease release;
    release.version = version;
    release.files = std::move(files);
    return release;
  }

  void StartApp() {
    app_ = std::make_unique<CApp>(SAppSettings{&config_,
                                               {runtime_.wide(), L"", game_.wide(), launcherPath_},
                                               launcherFolder_.wide(),
                                               cache_.wide(),
                                               [this] { return now_.load(); }});
    std::wstring error;
    ASSERT_TRUE(app_->Initialize(window_, error)) << text::WideToUtf8(error);
    EXPECT_TRUE(window_.Called(L"timer 1000"));
    window_.page.pageLoaded();
  }

  bool Settled() { return window_.RunUntil(*app_, [&] { return app_->Busy() == CApp::EWork::Idle; }); }
  void Send(const std::string& message) { window_.page.messageReceived(message); }

  testing_support::TempDir launcherFolder_;
  testing_support::TempDir cache_;
  std::atomic<std::uint64_t> now_{1'000'000};
  CRecordingWindow window_;
  std::unique_ptr<CApp> app_;
};

TEST_F(ControllerTest, FirstStartPatchesByItselfStartsTheGameAndCloses) {
  const testing_support::ScopedEnvironment arabic(L"LC_ALL", L"ar_SA.UTF-8");
  // The only test that starts the game names it apart: a controller test
  // running beside it would otherwise find its game running and hold back.
  config_.gameExecutable = L"ctl-started.exe";
  launch_test::CopyProbe(game_.path(), config_.gameExecutable);
  PublishRelease(Release(ContentFiles()));
  for (const char* file : {"ui/locale/en.json", "ui/locale/ar.json", "ui/flags/ar.tga"}) PublishFile(file, "{}");
  PublishFile("cover/note.PNG", "\x89PNG picture");
  PublishFile("ui.json", R"({"patchNote":{"title":"Winter","coverImage":"cover/note.PNG"},"maintenance":{"active":false}})");
  StartApp();
  EXPECT_EQ(window_.Last(L"phase"), L"connecting");

  ASSERT_TRUE(window_.RunUntil(*app_, [&] { return window_.Called(L"close"); }));
  EXPECT_EQ(launch_test::WaitForProbeRecord(game_.path()).size(), 1u) << "the game was started";
  EXPECT_EQ(testing_support::ReadFileBytes(game_.path() / "data/world.pak"), ContentFiles()[0].bytes);
  ASSERT_TRUE(Settled());
  EXPECT_EQ(window_.Last(L"phase"), L"ready");
  EXPECT_EQ(window_.Last(L"notice", L"message"), L"Patch complete. Game launch triggered.");
  EXPECT_EQ(window_.Last(L"notice", L"kind"), L"success");

  // The page's resources came along: this build starts in Arabic.
  for (const char* file : {"ui/locale/en.json", "ui/locale/ar.json", "ui/flags/ar.tga"}) {
    EXPECT_EQ(testing_support::ReadFileBytes(cache_.path() / file), "{}") << file;
  }
  const auto cover = webview::FindMedia(webview::kCoverMediaPath);
  ASSERT_TRUE(cover.has_value());
  EXPECT_EQ(testing_support::ReadFileBytes(platform::ToPath(*cover)), "\x89PNG picture");
  text::CJsonValue root;
  ASSERT_TRUE(text::ParseJson(text::Utf8ToWide(window_.pushed.back()), root));
  EXPECT_EQ(root.Find(L"feed")->Find(L"patchNote")->Find(L"coverImage")->AsString(),
            std::wstring(webview::PageOrigin()) + L"media/cover");
}

TEST_F(ControllerTest, AFailingBlobIsReportedOnceAndAutomaticRetriesStayQuiet) {
  PublishRelease(Release(ContentFiles(), 1));
  RemovePublishedFile(BlobPath(sync_tests::Sha256Hex(ContentFiles()[0].bytes)));
  StartApp();
  ASSERT_TRUE(Settled());
  ASSERT_TRUE(window_.RunUntil(*app_, [&] { return window_.Last(L"phase") == L"error"; }));
  const std::wstring failure =
      L"1 file could not be updated: data/world.pak (the published update is incomplete). The rest of the update "
      L"was applied.";
  EXPECT_EQ(window_.Last(L"notice", L"message"), failure);
  EXPECT_EQ(window_.Last(L"lastError"), failure);

  // A new release: the automatic retry applies it and meets only the known failure.
  std::vector<SGameFile> files = ContentFiles();
  files[1].bytes = PatternBytes(800, 9);
  PublishRelease(Release(files, 2));
  RemovePublishedFile(BlobPath(sync_tests::Sha256Hex(files[0].bytes)));
  now_ += 60'000;  // an hour of idleness would do the same
  const std::size_t before = window_.pushed.size();
  app_->OnTimer();
  ASSERT_TRUE(window_.RunUntil(*app_, [&] {
    return testing_support::ReadFileBytes(game_.path() / "bin/sound.dll") == files[1].bytes &&
           app_->Busy() == CApp::EWork::Idle;
  }));
  app_->PushState();
  EXPECT_EQ(window_.Last(L"phase"), L"error");
  EXPECT_FALSE(window_.Called(L"close"));
  // The old notice is gone after 8 s, and no new one came.
  for (std::size_t i = before; i < window_.pushed.size(); ++i) EXPECT_EQ(Field(window_.pushed[i], L"notice"), L"null");
}

TEST_F(ControllerTest, MaintenanceALanguageSwitchAndARepairThatLeavesTheGameAlone) {
  launch_test::CopyProbe(game_.path(), L"ctl-game.exe");
  PublishRelease(Release(ContentFiles()));
  WriteGameFiles(ContentFiles());  // adopted by the first check
  PublishFile("ui.json", R"({"maintenance":{"active":true,"text":"Back at 18:00"}})");
  StartApp();
  ASSERT_TRUE(Settled());
  EXPECT_EQ(window_.Last(L"phase"), L"maintenance");
  EXPECT_EQ(window_.Last(L"maintenance", L"text"), L"Back at 18:00");
  EXPECT_EQ(window_.Last(L"canPatch") + window_.Last(L"canPlay") + window_.Last(L"canRepair"), L"falsetruetrue");

  const std::wstring other = window_.Last(L"language") == L"ar" ? L"en" : L"ar";
  Send(other == L"ar" ? R"({"command":"languageAR"})" : R"({"command":"languageEN"})");
  EXPECT_EQ(app_->Busy(), CApp::EWork::Syncing) << "a switch checks the host again";
  EXPECT_EQ(window_.Last(L"language"), other);
  EXPECT_NE(RuntimeFile("launcher.state").find("language=" + text::WideToUtf8(other)), std::string::npos);
  app_->StartPatchAsync(false);
  EXPECT_EQ(app_->Busy(), CApp::EWork::Syncing) << "no patch while a check runs";

  ASSERT_TRUE(Settled());
  Send(R"({"command":"repair"})");
  EXPECT_EQ(app_->Busy(), CApp::EWork::Repairing);
  ASSERT_TRUE(Settled());
  EXPECT_EQ(window_.Last(L"notice", L"message"), L"Patch complete. The game is ready to launch.");
  EXPECT_FALSE(window_.Called(L"close"));
  EXPECT_FALSE(fs::exists(game_.path() / "probe.out")) << "a repair never starts the game";
}

TEST_F(ControllerTest, CommandsFromThePage) {
  game_.Write("ctl-game.exe", "not a program");  // present, so play is offered, but it cannot start
  PublishRelease(Release(ContentFiles()));
  WriteGameFiles(ContentFiles());
  StartApp();
  ASSERT_TRUE(Settled());
  ASSERT_EQ(window_.Last(L"canPlay"), L"true");
  const fs::path log = runtime_.path() / "launcher.log";
  // Each message with the window call it makes, if any.
  const std::pair<const char*, std::wstring> commands[] = {
      {R"({"command":"Patch"})", L""},          // refused: names compare exactly
      {R"({"command":"patch"})", L""},          // dropped: no patch is available
      {R"({"command":"removeOrphans"})", L""},  // dropped: no orphans are known
      {R"({"command":"toggleSettings"})", L""},
      {R"({"command":"startResize","edge":"Left"})", L""},
      {R"({"command":"startResize","edge":"bottomRight"})", L"grip 17"},
      {R"({"command":"startDrag"})", L"grip 2"},
      {R"({"command":"minimize"})", L"minimize"},
      {R"({"command":"openExternal","url":" example.org/news "})", L"open https://example.org/news"},
      {R"({"command":"openLog"})", L"reveal " + platform::FromPath(log)},
  };
  for (const auto& [message, call] : commands) {
    const std::size_t before = window_.calls.size();
    Send(message);
    EXPECT_EQ(window_.calls.size() - before, call.empty() ? 0u : 1u) << message;
    if (!call.empty()) {
      EXPECT_EQ(window_.calls.back(), call) << message;
    }
  }
  EXPECT_EQ(app_->Busy(), CApp::EWork::Idle);
  const std::string logText = testing_support::ReadFileBytes(log);
  const std::string refusalLine = "WARN  [bridge] refused a webview command\n";
  const std::size_t refusal = logText.find(refusalLine);
  EXPECT_NE(refusal, std::string::npos);
  EXPECT_EQ(logText.find(refusalLine, refusal + 1), std::string::npos) << "only the misspelt name is refused";
  fs::remove(log);
  Send(R"({"command":"openLog"})");
  EXPECT_EQ(window_.calls.back(), L"folder " + runtime_.wide());

  const std::pair<const char*, std::wstring> notices[] = {
      {R"({"command":"openExternal","url":"http://example.org"})", L"That link was refused."},
      {R"({"command":"openExternal","url":"https://example.org/unopenable"})", L"That link could not be opened."},
      {R"({"command":"play"})", L"Could not start game executable: " + platform::FromPath(game_.path() / "ctl-game.exe")},
  };
  for (const auto& [message, notice] : notices) {
    Send(message);
    EXPECT_EQ(window_.Last(L"notice", L"message").substr(0, notice.size()), notice) << message;
  }
  EXPECT_FALSE(window_.Called(L"close"));

  // An unchanged state is not sent again, but a reloaded page gets it at once.
  const std::size_t sent = window_.pushed.size();
  app_->PushState();
  app_->PushState();
  EXPECT_EQ(window_.pushed.size(), sent);
  window_.page.pageLoaded();
  ASSERT_EQ(window_.pushed.size(), sent + 1);
  EXPECT_EQ(window_.pushed[sent], window_.pushed[sent - 1]);

  launch_test::CopyProbe(game_.path(), L"ctl-game.exe");
  Send(R"({"command":"playMulti"})");
  EXPECT_FALSE(launch_test::WaitForProbeRecord(game_.path()).empty());
  ASSERT_TRUE(window_.RunUntil(*app_, [&] { return window_.Called(L"close"); }));
}

}  // namespace
