// The program's surface: help, usage errors and their exit statuses, and
// check-ui, which needs no host.

#include <gtest/gtest.h>

#include "tests/publisher/publisher_test_support.h"
#include "tests/support/temp_dir.h"

namespace publisher_testing {
namespace {

// Help goes to standard output with status 0; a usage error to standard error
// with status 2; a document the launcher could not read fails with 1. The other
// stream stays empty.
TEST(PublisherCommandLine, EachInvocationEndsWithItsStatusAndItsTextOnOneStream) {
  testing_support::TempDir dir;
  const struct {
    std::vector<std::wstring> arguments;
    int status;
    const char* text;
  } cases[] = {
      {{L"help"}, 0, "Usage: vardeni-publish"},
      {{L"publish", L"--help"}, 0, "Usage: vardeni-publish"},
      {{L"verify", L"-h"}, 0, "Usage: vardeni-publish"},
      {{}, 2, "Usage: vardeni-publish <command>"},
      {{L"frobnicate"}, 2, "unknown command 'frobnicate'"},
      {{L"keygen"}, 2, "missing --secret"},
      {{L"keygen", L"--secret"}, 2, "--secret needs a value"},
      {{L"keygen", L"--secret", L"k", L"--colour", L"red"}, 2, "unknown option --colour"},
      {{L"keygen", L"--secret=a", L"--secret=b"}, 2, "--secret may be given only once"},
      {{L"keygen", L"--secret=a", L"--force=yes"}, 2, "--force takes no value"},
      {{L"publish", L"--host", L"h", L"--game", L"g", L"--channel", L"stable", L"--release", L"1"}, 2, "missing --key"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=gamma", L"--release=1", L"--key=k"}, 2,
       "--channel must be stable or beta"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=0", L"--key=k"}, 2, "--release must be"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=9007199254740993", L"--key=k"}, 2,
       "--release must be"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=1", L"--key=k", L"--launcher=l"}, 2,
       "--launcher and --launcher-version go together"},
      {{L"publish", L"--host=h", L"--game=g", L"--channel=beta", L"--release=1", L"--key=k", L"--launcher=l",
        L"--launcher-version=v1"},
       2, "--launcher-version must be a dotted version"},
      {{L"sign", L"--list=patchlist.v1.txt", L"--key=k"}, 2, "--list must name a .json update list"},
      {{L"verify", L"--host=h", L"--key-hex=00"}, 2, "a public key must be 64 hexadecimal digits"},
      {{L"verify", L"--host=h", L"--key-hex=" + std::wstring(64, L'0')}, 2, "is not a usable Ed25519 key"},
      {{L"check-ui"}, 2, "name exactly one ui.json file"},
      {{L"check-ui", Text(dir.Write("ui.json", "[]"))}, 1, "Launcher UI document is invalid."},
      {{L"check-ui", Text(dir.path() / "absent.json")}, 1, "absent.json"},
  };
  for (const auto& c : cases) {
    const SToolRun run = RunTool(c.arguments);
    EXPECT_EQ(run.exitCode, c.status) << c.text;
    EXPECT_TRUE(Contains(c.status == 0 ? run.out : run.err, c.text));
    EXPECT_EQ(c.status == 0 ? run.err : run.out, "") << c.text;
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

}  // namespace
}  // namespace publisher_testing
