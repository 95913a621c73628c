#include <windows.h>

#include "platform/process_start.h"
#include "tests/publisher/publisher_test_support.h"
#include "tests/support/temp_dir.h"

namespace publisher_testing {
namespace {

HANDLE InheritableFile(const std::filesystem::path& path) {
  SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
}

}  // namespace

SToolRun RunTool(const std::vector<std::wstring>& arguments) {
  const testing_support::TempDir capture;
  const std::filesystem::path outFile = capture.path() / "out";
  const std::filesystem::path errFile = capture.path() / "err";
  const std::wstring tool = ToolPath().wstring();
  std::wstring commandLine = platform::ComposeCommandLine(tool, arguments);

  SToolRun run;
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
    if (::GetExitCodeProcess(process.hProcess, &code)) run.exitCode = static_cast<int>(code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
  }
  ::CloseHandle(out);
  ::CloseHandle(err);
  run.out = testing_support::ReadFileBytes(outFile);
  run.err = testing_support::ReadFileBytes(errFile);
  return run;
}

}  // namespace publisher_testing
