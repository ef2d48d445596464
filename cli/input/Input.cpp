#include "cli/input/Input.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "cli/CliError.h"
#include "cli/Printable.h"

namespace korassoc::cli {
namespace {

[[noreturn]] void failToRead(const std::string& name, const std::error_code& error) {
  if (error.value() == EISDIR) {
    throw CliError(ExitCode::kInput, name + ": is a directory; give the basket file in it");
  }
  throw CliError(ExitCode::kInput,
                 name + ": cannot be read: " + error.message() + "; check the path and its permissions");
}

// Runs a call of the source.
template <typename Call>
auto reading(const std::string& name, const Call& call) {
  try {
    return call();
  } catch (const std::system_error& error) {
    failToRead(name, error.code());
  }
}

}  // namespace

Input Input::open(const std::string& path) {
  if (path.empty()) {
    throw CliError(ExitCode::kInput, "the file name is empty; give a basket file, or - for standard input");
  }
  std::string name = path == "-" ? "standard input" : printable(path);
  auto file = reading(name, [&path] { return std::make_unique<InputFile>(path); });
  return {std::move(file), std::move(name)};
}

Input::Input(std::unique_ptr<ByteSource> source, std::string name)
    : source_(std::move(source)), name_(std::move(name)) {
  begin();
}

void Input::begin() {
  before_ = reading(name_, [this] { return source_->stamp(); });
  bytesRead_ = 0;
  metEnd_ = false;
}

std::uint64_t Input::expectedBytes() const {
  return before_ && before_->size > before_->position ? before_->size - before_->position : 0;
}

std::size_t Input::read(char* to, std::size_t bytes) {
  const std::size_t got = reading(name_, [&] { return source_->read(to, bytes); });
  bytesRead_ += got;
  metEnd_ = got == 0;
  if (before_ && bytesRead_ > expectedBytes()) finish();
  return got;
}

void Input::finish() {
  if (!before_) return;
  const auto now = reading(name_, [this] { return source_->stamp(); });
  if (!now) return;
  if (before_->size != now->size) {
    failChanged(fmt::format("{} bytes at first, {} at the end", before_->size, now->size));
  }
  if (!before_->isOfSameContent(*now)) {
    failChanged(fmt::format("{} bytes as before, but written to", now->size));
  }
  if (before_->size == 0) return;
  const std::uint64_t expected = expectedBytes();
  if (bytesRead_ > expected || (metEnd_ && bytesRead_ < expected)) {
    throw CliError(
        ExitCode::kInput,
        fmt::format("{}: its size says {} bytes, but {} were read; another program may be changing "
                    "it; give a copy of it, or its bytes through a pipe",
                    name_, expected, bytesRead_));
  }
}

bool Input::restart() {
  const bool atStart = reading(name_, [this] { return source_->restart(); });
  if (atStart) begin();
  return atStart;
}

void Input::failChanged(const std::string& how) const {
  throw CliError(ExitCode::kInput,
                 fmt::format("{}: another program changed it while it was read ({}); try again when it is "
                             "complete, or give a copy of it",
                             name_, how));
}

}  // namespace korassoc::cli
