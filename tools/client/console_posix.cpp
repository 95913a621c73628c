#include <sys/ioctl.h>
#include <unistd.h>

#include "tools/client/console.h"

namespace client {
namespace {

constexpr int kDefaultColumns = 80;

}  // namespace

void PrepareConsole() {}

bool IsStandardOutputTerminal() { return isatty(STDOUT_FILENO) == 1; }

int TerminalColumns() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return kDefaultColumns;
}

}  // namespace client
