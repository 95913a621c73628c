#include "platform/file_time.h"

#include <sys/stat.h>

#include "text/utf.h"

namespace platform {

bool ReadFileStamp(const std::wstring& path, SFileStamp& stamp) {
  struct stat info {};
  // The UTF-8 bytes ToPath would hold, without building a path object: this
  // runs once per game file on every integrity check.
  if (::stat(text::WideToUtf8(path).c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  stamp.size = static_cast<std::uint64_t>(info.st_size);
  stamp.lastWriteTime = FileTimeFromUnixTime(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
  return true;
}

}  // namespace platform
