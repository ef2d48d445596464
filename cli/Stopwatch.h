// Seconds of the steps of a run.

#pragma once

#include <chrono>

namespace korassoc::cli {

class Stopwatch {
 public:
  // Seconds since construction or the last call.
  double lap() {
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> seconds = now - last_;
    last_ = now;
    return seconds.count();
  }

 private:
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

}  // namespace korassoc::cli
