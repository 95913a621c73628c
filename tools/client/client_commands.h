#pragma once
// The client's commands, each one call into the launcher's patch engine.

#include "tools/client/client_options.h"
#include "tools/client/client_output.h"

namespace client {

// Runs the command `options` names and returns the process exit code.
int RunClientCommand(const SClientOptions& options, CClientOutput& output);

}  // namespace client
