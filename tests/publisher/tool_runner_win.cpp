#include <windows.h>

#include "platform/process_start.h"
#include "tests/publisher/publisher_test_support.h"

namespace publisher_testing {
namespace {

HANDLE InheritableFile(const std::filesystem::path& path) {
  SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
}

}  // namespace

int RunToolWritingTo(const std::vector<std::wstring>& arguments, const std::filesystem::path& outFile,
                     const std::filesystem::path& errFile) {
  const std::wstring tool = ToolPath().wstring();
  std::wstring commandLine = platform::ComposeCommandLine(tool, arguments);
  int exitCode = -1;
  HANDLE out = InheritableFile(outFile);
  HANDLE err = InheritableFile(errFile);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = out;
  startup.hStdError = err;
  PROCESS_INFORMATION process{};
  if (::CreateProcessW(tool.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                       &process)) {
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    if (::GetExitCodeProcess(process.hProcess, &code)) exitCode = static_cast<int>(code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
  }
  ::CloseHandle(out);
  ::CloseHandle(err);
  return exitCode;
}

}  // namespace publisher_testing
