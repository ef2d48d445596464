#include "tests/cli/RunKorassoc.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace korassoc::cli {
namespace {

// What follows runs in the child alone, where whatever fails ends it.

void redirect(const char* path, int flags, int to) {
  const int file = ::open(path, flags);
  if (file < 0 || ::dup2(file, to) < 0) ::_exit(120);
  if (file != to) ::close(file);
}

void limit(decltype(RLIMIT_AS) resource, std::size_t bytes) {
  const rlimit limit = {bytes, bytes};
  if (bytes > 0 && ::setrlimit(resource, &limit) != 0) ::_exit(121);
}

void arrange(const ToolSetting& setting) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ})
    std::signal(signal, SIG_DFL);
  for (const int signal : setting.ignoredSignals) std::signal(signal, SIG_IGN);
  for (const auto& [own, tests] : setting.descriptors) {
    if (tests < 0 ? ::close(own) != 0 : ::dup2(tests, own) < 0) ::_exit(120);
  }
  const rlimit noCore = {0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
  limit(RLIMIT_AS, setting.addressSpaceBytes);
  limit(RLIMIT_FSIZE, setting.fileSizeBytes);
}

}  // namespace

StartedTool::StartedTool(const std::vector<std::string>& arguments, const ToolSetting& setting)
    : input_(setting.input), output_(""), errors_("") {
  const std::string inputName = input_.name();
  const std::string outputName = setting.outputPath != nullptr ? setting.outputPath : output_.name();
  const std::string errorsName = errors_.name();
  std::vector<std::string> words = {KORASSOC_TOOL};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  child_ = ::fork();
  if (child_ == 0) {
    redirect(inputName.c_str(), O_RDONLY, STDIN_FILENO);
    redirect(outputName.c_str(), O_WRONLY, STDOUT_FILENO);
    redirect(errorsName.c_str(), O_WRONLY, STDERR_FILENO);
    arrange(setting);
    ::execv(argv[0], argv.data());
    ::_exit(122);
  }
  if (child_ < 0) ADD_FAILURE() << "the tool could not be started";
}

StartedTool::~StartedTool() {
  if (child_ < 0) return;
  send(SIGKILL);
  ::waitpid(child_, nullptr, 0);
}

void StartedTool::send(int signal) const {
  if (child_ > 0) ::kill(child_, signal);
}

ToolRun StartedTool::wait() {
  ToolRun run;
  int status = 0;
  if (child_ < 0 || ::waitpid(child_, &status, 0) != child_) {
    ADD_FAILURE() << "the tool could not be waited for";
    return run;
  }
  child_ = -1;
  if (WIFEXITED(status)) run.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) run.signal = WTERMSIG(status);
  run.out = output_.contents();
  run.err = errors_.contents();
  return run;
}

ToolRun runKorassoc(const std::vector<std::string>& arguments, const ToolSetting& setting) {
  return StartedTool(arguments, setting).wait();
}

}  // namespace korassoc::cli
