#include "platform/new_file.h"

#include <windows.h>

#include "platform/path_text.h"

namespace platform {

ENewFileResult WriteNewFile(const std::filesystem::path& path, std::string_view bytes, std::uint32_t& errorCode) {
  errorCode = 0;
  const std::filesystem::path systemPath = SystemPath(path);
  // CREATE_NEW fails on any existing name, a link or junction included.
  const HANDLE file = ::CreateFileW(systemPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    errorCode = ::GetLastError();
    return ENewFileResult::NotCreated;
  }
  while (!bytes.empty()) {
    DWORD written = 0;
    const DWORD chunk = bytes.size() > 0x40000000 ? 0x40000000 : static_cast<DWORD>(bytes.size());
    if (!::WriteFile(file, bytes.data(), chunk, &written, nullptr) || written == 0) {
      errorCode = ::GetLastError();
      if (errorCode == 0) errorCode = ERROR_WRITE_FAULT;
      break;
    }
    bytes.remove_prefix(written);
  }
  if (!::CloseHandle(file) && errorCode == 0) errorCode = ::GetLastError();
  if (errorCode == 0) return ENewFileResult::Written;
  ::DeleteFileW(systemPath.c_str());
  return ENewFileResult::NotWritten;
}

}  // namespace platform
