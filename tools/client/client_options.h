#pragma once
// The headless client's command line: one command and the settings that the
// launcher has compiled in (patch host, keys) or finds itself (folders).

#include <string>
#include <vector>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"

namespace client {

enum class EClientCommand { Sync, Patch, Repair, Orphans, RemoveOrphans };

// Documented in the help text; scripts depend on them.
enum EClientExitCode : int {
  kExitDone = 0,
  kExitFailed = 1,
  kExitUsage = 2,
  kExitPatchAvailable = 3,
};

struct SClientOptions {
  EClientCommand command = EClientCommand::Sync;
  std::wstring host;
  std::vector<PublicKey> keys;  // one or two, in the order given
  std::wstring gameFolder;
  std::wstring runtimeFolder;  // empty: the game folder's ".runtime"
  std::wstring channel;        // empty: the channel the runtime folder recorded
  bool json = false;
};

enum class EParseOutcome { Run, Help, UsageError };

// `arguments` excludes the program name. On UsageError `error` holds one
// sentence naming the fault.
EParseOutcome ParseClientArguments(const std::vector<std::wstring>& arguments, SClientOptions& options,
                                   std::wstring& error);

// The --help text, UTF-8, ending in a line break.
std::string ClientHelpText();

// The compiled-in record with the patch host and keys replaced.
LauncherConfig ClientLauncherConfig(const SClientOptions& options);
patch::SServiceFolders ClientServiceFolders(const SClientOptions& options);

}  // namespace client
