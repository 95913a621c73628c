#include "platform/os_description.h"

#include <sys/utsname.h>

#include "text/utf.h"

namespace platform {

std::wstring OperatingSystemDescription() {
  utsname info{};
  if (uname(&info) != 0) return L"Linux (version unknown)";
  const std::wstring release = text::Utf8ToWide(info.release);
  if (release.empty()) return L"Linux (version unknown)";
  return L"Linux " + release;
}

}  // namespace platform
