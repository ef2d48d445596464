// Where results go, with every write checked.

#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace korassoc::cli {

// ResultStream collects text and writes it in large blocks, usually to standard output. Throws CliError
// (kRunFailed) as soon as a write fails, a BrokenPipe when the reader of a pipe has left. What was not
// finished is dropped: nothing is written unless there is more than a block of it.
class ResultStream {
 public:
  // The file stays the caller's. name is what messages call it.
  ResultStream(std::FILE* file, std::string name) : file_(file), name_(std::move(name)) {}

  void write(std::string_view text);

  // Writes what is left and hands it to the system.
  void finish();

 private:
  static constexpr std::size_t kBlockBytes = std::size_t{1} << 16;

  std::FILE* file_;
  std::string name_;
  std::string buffer_;

  void flush();
  [[noreturn]] void fail();
};

}  // namespace korassoc::cli
