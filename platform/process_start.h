#pragma once
// Starting another program and leaving it to run on its own: the launcher
// never waits for or watches what it starts (the game, or the new launcher
// finishing a self-update).

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

struct SProcessStart {
  // Full path of the program to run.
  std::wstring executable;
  // What the program receives after its own name, one entry per argument.
  std::vector<std::wstring> arguments;
  // Empty: the launcher's current folder.
  std::wstring workingDirectory;
  // Detaches the child from the launcher's console signals
  // (CREATE_NEW_PROCESS_GROUP / a process group of its own).
  bool newProcessGroup = false;
};

// Starts the program with the launcher's environment and no inherited
// handles. On failure `errorCode` holds the OS error code (GetLastError /
// errno), never 0.
bool StartProcess(const SProcessStart& request, std::uint32_t& errorCode);

// The Windows command line for the request: the program in double quotes,
// then each argument after one blank. An argument made only of letters,
// digits and "-_.=" stays bare; any other is put in double quotes, with
// backslashes and quotes escaped the way CommandLineToArgvW reads them back.
// So a switch followed by a path gives: "C:\new.exe" --switch "C:\old.exe".
std::wstring ComposeCommandLine(const std::wstring& executable, const std::vector<std::wstring>& arguments);

}  // namespace platform
