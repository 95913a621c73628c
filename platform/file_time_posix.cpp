#include "platform/file_time.h"

#include <sys/stat.h>

#include "platform/path_text.h"

namespace platform {

bool ReadFileStamp(const std::wstring& path, SFileStamp& stamp) {
  struct stat info {};
  if (::stat(ToPath(path).c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  stamp.size = static_cast<std::uint64_t>(info.st_size);
  stamp.lastWriteTime = FileTimeFromUnixTime(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
  return true;
}

}  // namespace platform
