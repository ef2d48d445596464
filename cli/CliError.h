// What stops a run of the tool: one line for the user and an exit code for scripts.

#pragma once

#include <stdexcept>
#include <string>

namespace korassoc::cli {

// Exit codes are part of the interface; scripts test them.
enum class ExitCode : int {
  kOk = 0,         // also when no rule was found
  kRunFailed = 1,  // memory ran out, the results could not be written, the engine gave up
  kUsage = 2,      // the command line does not make sense
  kInput = 3,      // the input cannot be read or understood
  kLimit = 4       // a limit on memory decided the result, or left none
};

// The message is one line without a line end: what is wrong, where, and what to try.
class CliError : public std::runtime_error {
 public:
  CliError(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

// Nobody reads the results any more.
class BrokenPipe : public CliError {
 public:
  explicit BrokenPipe(const std::string& message) : CliError(ExitCode::kRunFailed, message) {}
};

}  // namespace korassoc::cli
