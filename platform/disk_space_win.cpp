#include "platform/disk_space.h"

#include <windows.h>

#include "platform/path_text.h"

namespace platform {
namespace {

constexpr DWORD kVolumePathCapacity = MAX_PATH;

}  // namespace

bool QueryFreeDiskSpace(const std::filesystem::path& folder, std::uint64_t& freeBytes) {
  ULARGE_INTEGER available{};
  if (!GetDiskFreeSpaceExW(SystemPath(folder).c_str(), &available, nullptr, nullptr)) return false;
  freeBytes = available.QuadPart;
  return true;
}

bool QueryVolumeName(const std::filesystem::path& folder, std::wstring& volumeName) {
  wchar_t buffer[kVolumePathCapacity] = {};
  if (!GetVolumePathNameW(SystemPath(folder).c_str(), buffer, kVolumePathCapacity)) return false;
  volumeName = buffer;
  return !volumeName.empty();
}

}  // namespace platform
