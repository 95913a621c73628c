// The program's surface: help, usage errors and their exit statuses.

#include <gtest/gtest.h>

#include "tests/publisher/publisher_test_support.h"

namespace publisher_testing {
namespace {


TEST(PublisherCommandLine, HelpGoesToStandardOutputWithStatusZero) {
  for (const std::vector<std::wstring>& arguments :
       std::vector<std::vector<std::wstring>>{{L"--help"}, {L"help"}, {L"publish", L"--help"},
                                              {L"verify", L"-h"}, {L"check-ui", L"--help"}}) {
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

}  // namespace
}  // namespace publisher_testing
