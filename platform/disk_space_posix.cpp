#include "platform/disk_space.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <limits>

namespace platform {

bool QueryFreeDiskSpace(const std::filesystem::path& folder, std::uint64_t& freeBytes) {
  struct statvfs info {};
  if (::statvfs(folder.c_str(), &info) != 0) return false;
  const std::uint64_t blocks = info.f_bavail;
  const std::uint64_t blockSize = info.f_frsize != 0 ? info.f_frsize : info.f_bsize;
  const std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  freeBytes = blockSize != 0 && blocks > kMax / blockSize ? kMax : blocks * blockSize;
  return true;
}

bool QueryVolumeName(const std::filesystem::path& folder, std::wstring& volumeName) {
  struct stat info {};
  if (::stat(folder.c_str(), &info) != 0) return false;
  volumeName = std::to_wstring(static_cast<unsigned long long>(info.st_dev));
  return true;
}

}  // namespace platform
