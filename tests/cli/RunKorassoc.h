// Runs the tool as a user does: a process with arguments, input, output and an exit code.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korassoc::cli {

struct ToolRun {
  int exitCode = -1;  // -1: it was ended by a signal
  std::string out;
  std::string err;
};

struct ToolSetting {
  std::string_view input = {};        // what standard input holds
  const char* outputPath = nullptr;   // where standard output goes instead of into ToolRun::out
  std::size_t addressSpaceBytes = 0;  // a limit on the process's memory; 0: none
  std::size_t fileSizeBytes = 0;      // a limit on every file that it writes; 0: none
};

// Runs the korassoc that was built beside the tests and waits for it.
ToolRun runKorassoc(const std::vector<std::string>& arguments, const ToolSetting& setting = {});

}  // namespace korassoc::cli
