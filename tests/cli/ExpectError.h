// Runs something that must fail and hands back what the user would read.

#pragma once

#include <gtest/gtest.h>

#include <string>

#include "cli/CliError.h"

namespace korassoc::cli {

// The message of the CliError that run() throws; a test failure when it throws none, or another exit code.
template <typename Run>
std::string errorOf(ExitCode code, const Run& run) {
  try {
    run();
  } catch (const CliError& error) {
    EXPECT_EQ(error.code(), code) << error.what();
    EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << "a message is one line";
    return error.what();
  }
  ADD_FAILURE() << "no CliError was thrown";
  return {};
}

}  // namespace korassoc::cli
