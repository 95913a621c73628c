#include "platform/process_start.h"

#include <windows.h>

namespace platform {

bool StartProcess(const SProcessStart& request, std::uint32_t& errorCode) {
  errorCode = 0;
  // CreateProcessW may write into the command line, so it gets its own buffer.
  std::wstring commandLine = ComposeCommandLine(request.executable, request.arguments);
  const wchar_t* workingDirectory = request.workingDirectory.empty() ? nullptr : request.workingDirectory.c_str();
  const DWORD flags = request.newProcessGroup ? CREATE_NEW_PROCESS_GROUP : 0;
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(request.executable.c_str(), commandLine.data(), nullptr, nullptr, FALSE, flags, nullptr,
                      workingDirectory, &startup, &process)) {
    errorCode = GetLastError();
    if (errorCode == 0) errorCode = ERROR_GEN_FAILURE;
    return false;
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return true;
}

}  // namespace platform
