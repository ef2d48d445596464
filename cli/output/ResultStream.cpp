#include "cli/output/ResultStream.h"

#include <cerrno>
#include <cstring>

#include "cli/CliError.h"

namespace korassoc::cli {

void ResultStream::write(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= kBlockBytes) flush();
}

void ResultStream::finish() {
  flush();
  errno = 0;
  if (std::fflush(file_) != 0) fail();
}

void ResultStream::flush() {
  errno = 0;
  if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size()) fail();
  buffer_.clear();
}

void ResultStream::fail() {
  const int error = errno;
  const std::string message =
      name_ + ": cannot be written: " + (error == 0 ? "the system does not say why" : std::strerror(error)) +
      "; the results are not complete";
  if (error == EPIPE) throw BrokenPipe(message);
  throw CliError(ExitCode::kRunFailed, message);
}

}  // namespace korassoc::cli
