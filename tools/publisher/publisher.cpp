// vardeni-publish: the operator's side of the patch host.

#include <algorithm>
#include <string_view>

#include "tools/publisher/command_support.h"
#include "tools/publisher/commands.h"
#include "tools/publisher/console.h"
#include "tools/publisher/signing_key.h"

namespace publisher {
namespace {

struct SCommand {
  std::wstring_view name;
  int (*run)(const Arguments&);
  std::wstring_view summary;
};

constexpr SCommand kCommands[] = {
    {L"keygen", RunKeygen, L"make a signing key pair"},
    {L"public-key", RunPublicKey, L"print the public half of a secret key file"},
    {L"publish", RunPublish, L"publish a game folder as a release of a channel"},
    {L"sign", RunSign, L"add a signature by another key to a published update list"},
    {L"verify", RunVerify, L"check a patch host as a launcher would see it"},
    {L"check-ui", RunCheckUi, L"check a launcher UI document (ui.json)"},
};

std::wstring Overview() {
  std::wstring text = L"Usage: vardeni-publish <command> [options]\n\nCommands:\n";
  for (const SCommand& command : kCommands) {
    std::wstring name(command.name);
    name.resize(12, L' ');
    text += L"  " + name + std::wstring(command.summary) + L"\n";
  }
  text += L"\nRun 'vardeni-publish <command> --help' for a command's options.\n"
          L"Exit status: 0 success, 1 failure, 2 usage error.";
  return text;
}

}  // namespace

int RunPublisher(const Arguments& arguments) {
  if (arguments.empty()) {
    PrintError(Overview());
    return kExitUsage;
  }
  const std::wstring& name = arguments.front();
  if (name == L"--help" || name == L"-h" || name == L"help") {
    PrintLine(Overview());
    return kExitSuccess;
  }
  const auto command =
      std::find_if(std::begin(kCommands), std::end(kCommands), [&](const SCommand& c) { return c.name == name; });
  if (command == std::end(kCommands)) {
    PrintError(std::wstring(kToolName) + L": unknown command '" + name + L"'");
    PrintError(L"Try '" + std::wstring(kToolName) + L" --help'.");
    return kExitUsage;
  }
  if (!InitializeSodium()) return Failure(L"libsodium could not be initialised");
  return command->run(Arguments(arguments.begin() + 1, arguments.end()));
}

}  // namespace publisher
