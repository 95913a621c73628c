#include "platform/process_list.h"

#include <windows.h>
#include <tlhelp32.h>

#include "text/ascii_case.h"

namespace platform {

EProcessSearch FindProcessByFileName(std::wstring_view fileName) {
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return EProcessSearch::Unavailable;
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof(entry);
  EProcessSearch result = EProcessSearch::NotFound;
  for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
    if (text::EqualsIgnoringAsciiCase(entry.szExeFile, fileName)) {
      result = EProcessSearch::Found;
      break;
    }
  }
  CloseHandle(snapshot);
  return result;
}

}  // namespace platform
