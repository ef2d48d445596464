// Keeps what others write to std::cout out of the results.

#pragma once

#include <iostream>

namespace korassoc::cli {

// While one lives, what is written to std::cout goes where std::cerr writes: the engine's diagnostic lines go
// to standard output by design, which is where the tool's results go.
class StandardOutputGuard {
 public:
  StandardOutputGuard() : before_(std::cout.rdbuf(std::cerr.rdbuf())) {}
  ~StandardOutputGuard() { std::cout.rdbuf(before_); }
  StandardOutputGuard(const StandardOutputGuard&) = delete;
  StandardOutputGuard& operator=(const StandardOutputGuard&) = delete;

 private:
  std::streambuf* before_;
};

}  // namespace korassoc::cli
