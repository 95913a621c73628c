// The program's surface: help, usage errors and their exit statuses, and
// check-ui, which needs no host.

#include <gtest/gtest.h>

#include "tests/publisher/publisher_test_support.h"
#include "tests/support/temp_dir.h"

namespace publisher_testing {
namespace {

TEST(PublisherCommandLine, HelpGoesToStandardOutputWithStatusZero) {
  for (const std::vector<std::wstring>& arguments :
       std::vector<std::vector<std::wstring>>{{L"help"}, {L"publish", L"--help"}, {L"verify", L"-h"}}) {
    const SToolRun run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Contains(run.out, "Usage: vardeni-publish"));
    EXPECT_EQ(run.err, "");
  }
}

TEST(PublisherCommandLine, UsageErrorsExitWithTwo) {
  const std::pair<std::vector<std::wstring>, const char*> cases[] = {
      {{}, "Usage: vardeni-publish <command>"},
      {{L"frobnicate"}, "unknown command 'frobnicate'"},
      {{L"keygen"}, "missing --secret"},
      {{L"keygen", L"--secret"}, "--secret needs a value"},
      {{L"keygen", L"--secret", L"k", L"--colour", L"red"}, "unknown option --colour"},
      {{L"keygen", L"--secret=a", L"--secret=b"}, "--secret may be given only once"},
      {{L"keygen", L"--secret=a", L"--force=yes"}, "--force takes no value"},
      {{L"publish", L"--host", L"h", L"--game", L"g", L"--channel", L"stable", L"--release", L"1"}, "missing --key"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=gamma", L"--release=1", L"--key=k"},
       "--channel must be stable or beta"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=0", L"--key=k"}, "--release must be"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=9007199254740993", L"--key=k"},
       "--release must be"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=1", L"--key=k", L"--launcher=l"},
       "--launcher and --launcher-version go together"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=1", L"--key=k", L"--launcher=l",
        L"--launcher-version=v1"},
       "--launcher-version must be a dotted version"},
      {{L"sign", L"--list=patchlist.v1.txt", L"--key=k"}, "--list must name a .json update list"},
      {{L"verify", L"--host=h", L"--key-hex=00"}, "a public key must be 64 hexadecimal digits"},
      {{L"verify", L"--host=h", L"--key-hex=" + std::wstring(64, L'0')}, "is not a usable Ed25519 key"},
      {{L"check-ui"}, "name exactly one ui.json file"},
  };
  for (const auto& [arguments, message] : cases) {
    const SToolRun run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, 2) << message;
    EXPECT_TRUE(Contains(run.err, message));
    EXPECT_EQ(run.out, "") << message;
  }
}

TEST(CheckUi, ReportsWhatThePageShowsAndEveryDrop) {
  testing_support::TempDir dir;
  const auto file = dir.Write(
      "ui.json",
      R"({"timezone":"UTC","patchNote":{"title":"Patch 7"},"links":{"discord":"https://d","shop":7},)"
      R"("maintenance":{"active":true,"text":"Back soon"},"events":[)"
      R"({"name":"Boss","iconId":3,"dayOfWeek":2,"timeStart":"20:00","timeEnd":"21:00"},)"
      R"({"name":"Night","iconId":3,"dayOfWeek":2,"timeStart":"23:00","timeEnd":"01:00"}]})");
  const SToolRun run = RunTool({L"check-ui", Text(file)});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out,
            "clock: UTC\n"
            "patch note: \"Patch 7\"\n"
            "events: 1 kept\n"
            "links: discord\n"
            "maintenance: on, text \"Back soon\"\n"
            "dropped or changed: events[1]: skipped: timeEnd (\"01:00\") must be later than timeStart (\"23:00\"); "
            "an event cannot run across midnight, split it in two\n"
            "dropped or changed: links.shop: is 7, not a text; left empty\n"
            "2 note(s)\n");
}

TEST(CheckUi, FailsWhereTheLauncherCouldNotReadTheDocument) {
  testing_support::TempDir dir;
  const SToolRun invalid = RunTool({L"check-ui", Text(dir.Write("ui.json", "[]"))});
  EXPECT_EQ(invalid.exitCode, 1);
  EXPECT_TRUE(Contains(invalid.err, "Launcher UI document is invalid."));
  EXPECT_EQ(RunTool({L"check-ui", Text(dir.path() / "absent.json")}).exitCode, 1);
}

}  // namespace
}  // namespace publisher_testing
