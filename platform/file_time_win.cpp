#include "platform/file_time.h"

#include <windows.h>

#include "platform/path_text.h"

namespace platform {
namespace {

std::uint64_t Combine(DWORD high, DWORD low) { return (static_cast<std::uint64_t>(high) << 32) | low; }

}  // namespace

bool ReadFileStamp(const std::wstring& path, SFileStamp& stamp) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &data)) return false;
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
  stamp.size = Combine(data.nFileSizeHigh, data.nFileSizeLow);
  stamp.lastWriteTime =
      static_cast<std::int64_t>(Combine(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime));
  return true;
}

}  // namespace platform
