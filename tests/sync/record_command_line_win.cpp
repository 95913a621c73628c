// Stands in for a new launcher in the self-update tests: writes the command
// line it was started with to "command_line.txt" beside itself and exits.
// File: "raw:" + the whole command line, then "arg:" + each argument after
// the program name, UTF-8, one per line.
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "text/utf.h"

int wmain(int argc, wchar_t** argv) {
  std::wstring self(MAX_PATH * 4, L'\0');
  self.resize(GetModuleFileNameW(nullptr, self.data(), static_cast<DWORD>(self.size())));
  const std::wstring folder = self.substr(0, self.find_last_of(L"\\/") + 1);
  std::string record = "raw:" + text::WideToUtf8(GetCommandLineW()) + "\n";
  for (int i = 1; i < argc; ++i) record += "arg:" + text::WideToUtf8(argv[i]) + "\n";
  // Written under another name and renamed, so a reader never sees half a record.
  const std::wstring partial = folder + L"command_line.tmp";
  {
    std::ofstream out(std::filesystem::path(partial), std::ios::binary | std::ios::trunc);
    out << record;
  }
  return MoveFileExW(partial.c_str(), (folder + L"command_line.txt").c_str(), MOVEFILE_REPLACE_EXISTING) ? 0 : 1;
}
