#include "platform/process_start.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <thread>

#include "text/utf.h"

extern char** environ;

namespace platform {
namespace {

class CSpawnAttributes {
 public:
  CSpawnAttributes() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
  }
  ~CSpawnAttributes() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }
  CSpawnAttributes(const CSpawnAttributes&) = delete;
  CSpawnAttributes& operator=(const CSpawnAttributes&) = delete;

  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

// Nobody waits for a started program, so a thread of its own reaps it when it
// ends; otherwise it would linger as a zombie until the launcher exits.
void ReapWhenDone(pid_t child) {
  std::thread([child] {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
  }).detach();
}

}  // namespace

bool StartProcess(const SProcessStart& request, std::uint32_t& errorCode) {
  errorCode = 0;
  const std::string executable = text::WideToUtf8(request.executable);
  if (executable.empty()) {
    errorCode = ENOENT;
    return false;
  }
  std::vector<std::string> arguments{executable};
  for (const std::wstring& argument : request.arguments) arguments.push_back(text::WideToUtf8(argument));
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);

  CSpawnAttributes spawn;
  // The child gets standard input, output and error only, as on Windows: an
  // inherited descriptor would keep our log, locks and sockets open in it.
  posix_spawn_file_actions_addclosefrom_np(&spawn.actions_, 3);
  const std::string workingDirectory = text::WideToUtf8(request.workingDirectory);
  if (!workingDirectory.empty()) posix_spawn_file_actions_addchdir_np(&spawn.actions_, workingDirectory.c_str());
  if (request.newProcessGroup) {
    posix_spawnattr_setflags(&spawn.attributes_, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&spawn.attributes_, 0);
  }
  pid_t child = 0;
  // glibc reports a failed chdir or exec in the child as the call's result.
  const int result = posix_spawn(&child, executable.c_str(), &spawn.actions_, &spawn.attributes_, argv.data(), environ);
  if (result != 0) {
    errorCode = static_cast<std::uint32_t>(result);
    return false;
  }
  ReapWhenDone(child);
  return true;
}

}  // namespace platform
