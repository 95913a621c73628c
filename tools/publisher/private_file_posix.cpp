#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/path_text.h"
#include "text/utf.h"
#include "tools/publisher/private_file.h"

namespace publisher {
namespace {

std::wstring Failure(const wchar_t* what, const std::filesystem::path& path, int code) {
  return std::wstring(what) + L" " + platform::FromPath(path) + L": " + text::Utf8ToWide(std::strerror(code)) +
         L" (" + std::to_wstring(code) + L").";
}

bool WriteAll(int fd, std::string_view bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<std::size_t>(n);
  }
  return true;
}

}  // namespace

bool CreatePrivateFile(const std::filesystem::path& path, std::string_view bytes, std::wstring& error) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fd < 0) {
    error = Failure(L"Could not create", path, errno);
    return false;
  }
  // The umask may only narrow the mode; set it exactly anyway.
  bool ok = ::fchmod(fd, S_IRUSR | S_IWUSR) == 0 && WriteAll(fd, bytes);
  int code = errno;
  if (::close(fd) != 0 && ok) {
    ok = false;
    code = errno;
  }
  if (!ok) {
    error = Failure(L"Could not write", path, code);
    ::unlink(path.c_str());
  }
  return ok;
}

}  // namespace publisher
