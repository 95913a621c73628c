#include "platform/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

ENewFileResult WriteNewFile(const std::filesystem::path& path, std::string_view bytes, std::uint32_t& errorCode) {
  errorCode = 0;
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
  if (fd < 0) {
    errorCode = static_cast<std::uint32_t>(errno);
    return ENewFileResult::NotCreated;
  }
  while (!bytes.empty() && errorCode == 0) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      errorCode = static_cast<std::uint32_t>(written == 0 ? EIO : errno);
    }
  }
  if (::close(fd) != 0 && errorCode == 0) errorCode = static_cast<std::uint32_t>(errno);
  if (errorCode == 0) return ENewFileResult::Written;
  ::unlink(path.c_str());
  return ENewFileResult::NotWritten;
}

}  // namespace platform
