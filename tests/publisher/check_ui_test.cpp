// check-ui, run as the built program.

#include <gtest/gtest.h>

#include "tests/publisher/publisher_test_support.h"
#include "tests/support/temp_dir.h"

namespace publisher_testing {
namespace {


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
  const std::pair<std::string, const char*> cases[] = {
      {"[]", "Launcher UI document is invalid."},
      {"\xEF\xBB\xBF{}", "save it as UTF-8 without one"},
      {"{\"timezone\":\"\xFF\"}", "is not valid UTF-8"},
  };
  for (const auto& [bytes, message] : cases) {
    const SToolRun run = RunTool({L"check-ui", Text(dir.Write("ui.json", bytes))});
    EXPECT_EQ(run.exitCode, 1) << message;
    EXPECT_TRUE(Contains(run.err, message));
  }
  EXPECT_EQ(RunTool({L"check-ui", Text(dir.path() / "absent.json")}).exitCode, 1);
}

}  // namespace
}  // namespace publisher_testing
