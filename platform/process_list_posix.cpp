#include "platform/process_list.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "text/ascii_case.h"
#include "text/utf.h"

namespace platform {
namespace {

std::string ReadFirstLine(const std::filesystem::path& path) {
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);
  return line;
}

// A process that has ended but not yet been reaped still has a "/proc" entry;
// it is not running.
bool IsZombie(const std::filesystem::path& processFolder) {
  const std::string stat = ReadFirstLine(processFolder / "stat");
  const auto nameEnd = stat.rfind(')');
  return nameEnd != std::string::npos && nameEnd + 2 < stat.size() && stat[nameEnd + 2] == 'Z';
}

std::string ExecutableBaseName(const std::filesystem::path& processFolder) {
  std::error_code error;
  const auto target = std::filesystem::read_symlink(processFolder / "exe", error);
  return error ? std::string() : target.filename().string();
}

bool IsProcessFolder(const std::filesystem::directory_entry& entry) {
  const std::string name = entry.path().filename().string();
  return !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

EProcessSearch FindProcessByFileName(std::wstring_view fileName) {
  std::error_code error;
  std::filesystem::directory_iterator processes("/proc", error);
  if (error) return EProcessSearch::Unavailable;
  // Processes come and go during the walk; the error-code form of the
  // iteration never throws for one that vanished.
  for (; processes != std::filesystem::directory_iterator(); processes.increment(error)) {
    const auto& entry = *processes;
    if (!IsProcessFolder(entry)) continue;
    const std::string comm = ReadFirstLine(entry.path() / "comm");
    const std::string exe = ExecutableBaseName(entry.path());
    const bool named = (!comm.empty() && text::EqualsIgnoringAsciiCase(text::Utf8ToWide(comm), fileName)) ||
                       (!exe.empty() && text::EqualsIgnoringAsciiCase(text::Utf8ToWide(exe), fileName));
    if (named && !IsZombie(entry.path())) return EProcessSearch::Found;
  }
  return error ? EProcessSearch::Unavailable : EProcessSearch::NotFound;
}

}  // namespace platform
