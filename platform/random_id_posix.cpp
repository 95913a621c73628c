#include "platform/random_id.h"

#include <sys/random.h>

#include <cerrno>

namespace platform {

bool GenerateRandomId(RandomId& id) {
  std::size_t filled = 0;
  while (filled < id.size()) {
    const ssize_t got = getrandom(id.data() + filled, id.size() - filled, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    filled += static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace platform
