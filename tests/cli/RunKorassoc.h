// Runs the tool as a user does: a process with arguments, input, output and an exit code.

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/TemporaryFile.h"

namespace korassoc::cli {

struct ToolRun {
  int exitCode = -1;  // -1: it was ended by a signal
  int signal = 0;     // by this one
  std::string out;
  std::string err;
};

struct ToolSetting {
  std::string_view input = {};        // what standard input holds
  const char* outputPath = nullptr;   // where standard output goes instead of into ToolRun::out
  std::size_t addressSpaceBytes = 0;  // a limit on the process's memory; 0: none
  std::size_t fileSizeBytes = 0;      // a limit on every file that it writes; 0: none
  // Descriptors that the tool finds instead of the above, as {its own, the test's}; the test's -1: closed.
  std::vector<std::pair<int, int>> descriptors = {};
  std::vector<int> ignoredSignals = {};  // which the tool finds ignored; all others have their usual effect
};

// A korassoc, the one that was built beside the tests, that runs beside the test.
class StartedTool {
 public:
  explicit StartedTool(const std::vector<std::string>& arguments, const ToolSetting& setting = {});
  StartedTool(const StartedTool&) = delete;
  StartedTool& operator=(const StartedTool&) = delete;
  // Kills it if nobody has waited for it.
  ~StartedTool();

  void send(int signal) const;

  // Waits for its end. To be called once.
  ToolRun wait();

 private:
  // Files and not pipes, so that neither side can fill up and wait for the other.
  TemporaryFile input_, output_, errors_;
  pid_t child_ = -1;  // -1 once it has ended
};

// Runs it and waits for its end.
ToolRun runKorassoc(const std::vector<std::string>& arguments, const ToolSetting& setting = {});

}  // namespace korassoc::cli
