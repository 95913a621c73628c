#include "tools/client/client_main.h"

#include "log/log.h"
#include "platform/environment.h"
#include "text/utf.h"
#include "tools/client/client_commands.h"
#include "tools/client/client_options.h"
#include "tools/client/client_output.h"
#include "tools/client/console.h"

namespace client {

int RunClient(const std::vector<std::wstring>& arguments) {
  PrepareConsole();
  SClientOptions options;
  std::wstring error;
  switch (ParseClientArguments(arguments, options, error)) {
    case EParseOutcome::Help:
      WriteStandardOutput(ClientHelpText());
      return kExitDone;
    case EParseOutcome::UsageError:
      WriteStandardError("vardeni-client: " + text::WideToUtf8(error) + "\nTry 'vardeni-client --help'.\n");
      return kExitUsage;
    case EParseOutcome::Run:
      break;
  }
  // The engine's own log lines ("verified build ...", skipped files) are kept
  // beside its state, as the launcher keeps them beside itself.
  const std::wstring profile = platform::UserProfileDirectory();
  logging::OpenLog(ClientServiceFolders(options).runtimeFolder, profile, profile);

  const EOutputMode mode = options.json                ? EOutputMode::JsonLines
                           : IsStandardOutputTerminal() ? EOutputMode::TerminalBar
                                                        : EOutputMode::PlainLines;
  CClientOutput output(mode, TerminalColumns(), WriteStandardOutput, WriteStandardError);
  return RunClientCommand(options, output);
}

}  // namespace client
