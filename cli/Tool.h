// The tool as a whole: from the command line to the exit code.

#pragma once

#include <string>
#include <vector>

namespace korassoc::cli {

// Runs the verb that the arguments (the program's name left out) ask for. Results go to standard output, one
// line about what went wrong, or the figures of the run, to standard error. Returns an ExitCode as a number;
// throws nothing.
int runTool(const std::vector<std::string>& arguments) noexcept;

}  // namespace korassoc::cli
