#include "platform/module_path.h"

#include <unistd.h>

#include "text/utf.h"

namespace platform {

std::wstring QueryModulePath() {
  // readlink neither terminates nor says whether it truncated: grow until the answer fits with room to spare.
  std::string target(256, '\0');
  for (;;) {
    const ssize_t length = ::readlink("/proc/self/exe", target.data(), target.size());
    if (length <= 0) return {};
    if (static_cast<std::size_t>(length) < target.size()) {
      target.resize(static_cast<std::size_t>(length));
      return text::Utf8ToWide(target);
    }
    target.resize(target.size() * 2);
  }
}

}  // namespace platform
