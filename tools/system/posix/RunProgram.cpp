#include "system/RunProgram.h"

#include "Errors.h"

#include <cerrno>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>

extern char **environ;

int runProgram(const std::vector<std::string> &arguments) {
  std::vector<char *> argv;
  for (const std::string &argument : arguments)
    argv.push_back(const_cast<char *>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t child = 0;
  const int failed = posix_spawnp(&child, argv[0], nullptr, nullptr, argv.data(), environ);
  if (failed != 0)
    throw SetupError("cannot run " + arguments[0] + ": " + std::strerror(failed));
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR)
      throw SetupError("lost " + arguments[0] + ": " + std::strerror(errno));
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
