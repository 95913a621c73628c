#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/publisher/publisher_test_support.h"
#include "text/utf.h"

namespace publisher_testing {

int RunToolWritingTo(const std::vector<std::wstring>& arguments, const std::filesystem::path& outFile,
                     const std::filesystem::path& errFile) {
  const std::string tool = ToolPath().native();
  std::vector<std::string> storage{tool};
  for (const std::wstring& argument : arguments) storage.push_back(text::WideToUtf8(argument));
  std::vector<char*> argv;
  for (std::string& item : storage) argv.push_back(item.data());
  argv.push_back(nullptr);

  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    const int out = ::open(outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int err = ::open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    ::execv(tool.c_str(), argv.data());
    ::_exit(127);
  }
  int status = 0;
  if (child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status)) return WEXITSTATUS(status);
  return -1;
}

}  // namespace publisher_testing
