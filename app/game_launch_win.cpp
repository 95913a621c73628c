#include <windows.h>
#include <shellapi.h>

#include "app/game_launch_os.h"
#include "platform/process_start.h"

bool StartGameExecutable(const std::wstring& executablePath, const std::wstring& workingDirectory,
                         std::vector<SStartAttempt>& failures) {
  platform::SProcessStart request;
  request.executable = executablePath;
  request.workingDirectory = workingDirectory;
  std::uint32_t code = 0;
  if (platform::StartProcess(request, code)) return true;
  failures.push_back({L"CreateProcess", code});

  // The shell succeeds where CreateProcessW is refused, for example when the
  // game asks to be elevated.
  SHELLEXECUTEINFOW shell{};
  shell.cbSize = sizeof(shell);
  shell.fMask = SEE_MASK_NOCLOSEPROCESS;
  shell.lpVerb = L"open";
  shell.lpFile = executablePath.c_str();
  shell.lpDirectory = workingDirectory.empty() ? nullptr : workingDirectory.c_str();
  shell.nShow = SW_SHOWNORMAL;
  if (ShellExecuteExW(&shell)) {
    if (shell.hProcess) CloseHandle(shell.hProcess);
    return true;
  }
  failures.push_back({L"ShellExecute", GetLastError()});
  return false;
}

std::wstring RawSystemMessage(std::uint32_t code) {
  wchar_t* buffer = nullptr;
  const DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const DWORD length = FormatMessageW(flags, nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  std::wstring message = (length > 0 && buffer) ? std::wstring(buffer, length) : std::wstring();
  if (buffer) LocalFree(buffer);
  return message;
}

void WriteDebuggerOutput(const std::wstring& text) { OutputDebugStringW(text.c_str()); }
