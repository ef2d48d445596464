// What a reader reads: bytes with a name, from a file that must not change meanwhile.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cli/input/InputFile.h"

namespace korassoc::cli {

// Input hands out the bytes of a source and makes sure that they belong together. A regular file has to be the
// same at the end of reading as at its beginning, by size and time of modification: a mixture of two versions is
// no input, and neither is a log to which a line is being added. Pipes and terminals are read to their end, and
// so are files without a size, such as those of /proc.
//
//   Input input = Input::open("baskets.csv");
//   while (input.read(...) > 0) ...
//   input.finish();                            what was read counts from here on
//
// Errors: all throw CliError (kInput), in words that name the input.
class Input {
 public:
  // "-" is standard input. Refuses what is missing, a directory, or not readable.
  static Input open(const std::string& path);

  // name is what messages call the source.
  Input(std::unique_ptr<ByteSource> source, std::string name);

  // The path as given (unprintable characters escaped), or "standard input".
  const std::string& name() const { return name_; }

  // How many bytes the system says there are to read; 0 when it does not say. Nobody is bound by it.
  std::uint64_t expectedBytes() const;

  // Reads what comes next, at most so many bytes (more than 0). Returns how many; 0 at the end. Refuses a file
  // that has become longer as soon as that shows, so that none is followed for ever.
  std::size_t read(char* to, std::size_t bytes);

  // To be called when reading has ended, wherever that is. Refuses a file that was changed meanwhile.
  void finish();

  // Begins again, with the file as it is now. Returns false, with nothing changed, where that cannot be.
  bool restart();

 private:
  std::unique_ptr<ByteSource> source_;
  std::string name_;
  std::optional<FileStamp> before_;
  std::uint64_t bytesRead_ = 0;
  bool metEnd_ = false;

  void begin();
  [[noreturn]] void failChanged(const std::string& how) const;
};

}  // namespace korassoc::cli
