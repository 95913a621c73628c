#include <windows.h>

#include "platform/path_text.h"
#include "tools/publisher/private_file.h"

namespace publisher {
namespace {

std::wstring Failure(const wchar_t* what, const std::filesystem::path& path, DWORD code) {
  return std::wstring(what) + L" " + path.wstring() + L" (error " + std::to_wstring(code) + L").";
}

}  // namespace

bool CreatePrivateFile(const std::filesystem::path& path, std::string_view bytes, std::wstring& error) {
  // Not shared while it is written; the user's own folder's access list keeps others out.
  HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    error = Failure(L"Could not create", path, ::GetLastError());
    return false;
  }
  DWORD written = 0;
  const BOOL ok = ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
                  written == bytes.size();
  const DWORD code = ::GetLastError();
  ::CloseHandle(file);
  if (!ok) {
    error = Failure(L"Could not write", path, code);
    ::DeleteFileW(path.c_str());
    return false;
  }
  return true;
}

}  // namespace publisher
