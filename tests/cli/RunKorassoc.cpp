#include "tests/cli/RunKorassoc.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFile.h"

namespace korassoc::cli {
namespace {

// In the child alone: makes the descriptor to be the file, or ends the child.
void redirect(const char* path, int flags, int to) {
  const int file = ::open(path, flags);
  if (file < 0 || ::dup2(file, to) < 0) ::_exit(120);
}

}  // namespace

ToolRun runKorassoc(const std::vector<std::string>& arguments, const ToolSetting& setting) {
  // Through files and not pipes, so that neither side can fill up and wait for the other.
  const TemporaryFile input(setting.input);
  const TemporaryFile output("");
  const TemporaryFile errors("");
  const std::string inputName = input.name();
  const std::string outputName = setting.outputPath != nullptr ? setting.outputPath : output.name();
  const std::string errorsName = errors.name();
  std::vector<std::string> words = {KORASSOC_TOOL};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  const pid_t child = ::fork();
  if (child == 0) {
    redirect(inputName.c_str(), O_RDONLY, STDIN_FILENO);
    redirect(outputName.c_str(), O_WRONLY, STDOUT_FILENO);
    redirect(errorsName.c_str(), O_WRONLY, STDERR_FILENO);
    if (setting.addressSpaceBytes > 0) {
      const rlimit limit = {setting.addressSpaceBytes, setting.addressSpaceBytes};
      if (::setrlimit(RLIMIT_AS, &limit) != 0) ::_exit(121);
    }
    if (setting.fileSizeBytes > 0) {
      const rlimit limit = {setting.fileSizeBytes, setting.fileSizeBytes};
      if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(121);
    }
    ::execv(argv[0], argv.data());
    ::_exit(122);
  }
  ToolRun run;
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) {
    ADD_FAILURE() << "the tool could not be started";
    return run;
  }
  if (WIFEXITED(status)) run.exitCode = WEXITSTATUS(status);
  run.out = output.contents();
  run.err = errors.contents();
  return run;
}

}  // namespace korassoc::cli
