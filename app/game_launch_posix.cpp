#include <unistd.h>

#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "app/game_launch_os.h"
#include "platform/environment.h"
#include "platform/path_text.h"
#include "platform/process_start.h"
#include "text/utf.h"

namespace {

// A Windows program (its image begins with "MZ").
bool IsPortableExecutable(const std::wstring& path) {
  std::ifstream in(platform::ToPath(path), std::ios::binary);
  char magic[2] = {};
  return in.read(magic, sizeof(magic)) && magic[0] == 'M' && magic[1] == 'Z';
}

// The first executable "wine" in a folder of PATH; empty when there is none.
std::wstring FindWineOnPath() {
  std::wstringstream folders(platform::EnvironmentVariable(L"PATH"));
  std::wstring folder;
  while (std::getline(folders, folder, L':')) {
    if (folder.empty()) continue;
    const std::wstring candidate = folder + L"/wine";
    if (access(text::WideToUtf8(candidate).c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

}  // namespace

bool StartGameExecutable(const std::wstring& executablePath, const std::wstring& workingDirectory,
                         std::vector<SStartAttempt>& failures) {
  platform::SProcessStart request;
  request.executable = executablePath;
  request.workingDirectory = workingDirectory;
  std::wstring method = L"posix_spawn";
  if (IsPortableExecutable(executablePath)) {
    if (std::wstring wine = FindWineOnPath(); !wine.empty()) {
      request.executable = wine;
      request.arguments = {executablePath};
      method = L"wine";
    }
  }
  std::uint32_t code = 0;
  if (platform::StartProcess(request, code)) return true;
  failures.push_back({method, code});
  return false;
}

std::wstring RawSystemMessage(std::uint32_t code) {
  char buffer[256] = {};
  // GNU strerror_r returns the message, which may or may not live in `buffer`.
  const char* message = strerror_r(static_cast<int>(code), buffer, sizeof(buffer));
  return message ? text::Utf8ToWide(message) : std::wstring();
}

void WriteDebuggerOutput(const std::wstring& text) { std::cerr << text::WideToUtf8(text) << std::flush; }
