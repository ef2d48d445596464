// A standard stream that throws on every write, as a host can set it up.

#pragma once

#include <ostream>

#include "tests/support/FailingBuffer.h"

// While one lives, the stream takes nothing and throws.
class ThrowingOutput {
 public:
  explicit ThrowingOutput(std::ostream& stream) : stream_(stream), former_(stream.rdbuf(&full_)) {
    stream_.exceptions(std::ios::badbit | std::ios::failbit);
  }
  ThrowingOutput(const ThrowingOutput&) = delete;
  ThrowingOutput& operator=(const ThrowingOutput&) = delete;
  ~ThrowingOutput() {
    stream_.exceptions(std::ios::goodbit);
    stream_.rdbuf(former_);  // and all is well again
  }

 private:
  FailingBuffer full_{0};
  std::ostream& stream_;
  std::streambuf* former_;
};
