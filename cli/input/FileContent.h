// The bytes of the input, in memory of our own.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "cli/input/InputFile.h"

namespace korassoc::cli {

// FileContent holds a whole input in memory for as long as it lives. It is a copy and not a mapping: whoever
// reads it looks at the same bytes as often as it likes, whatever other programs do to the file.
//
// A regular file has to be the same at the end of reading as at its beginning, by size and time of
// modification: a mixture of two versions is no input, and neither is a log to which a line is being added.
// Pipes and terminals are read to their end, and so are files without a size, such as those of /proc.
class FileContent {
 public:
  // Opens the file; "-" is standard input. Throws CliError (kInput) when it is missing, a directory, not
  // readable, or changed by another program while it was read. Reading stops after the first block with a NUL
  // byte, which no text has, so that an endless device ends at once; whoever reads the text meets the byte.
  static FileContent open(const std::string& path);

  // The same for what is open already. name is what messages call it.
  static FileContent take(ByteSource& source, std::string name);

  std::string_view bytes() const { return {buffer_.get(), size_}; }

  // How messages call the input: the path as given (unprintable characters escaped), or "standard input".
  const std::string& name() const { return name_; }

 private:
  explicit FileContent(std::string name) : name_(std::move(name)) {}

  std::string name_;
  std::unique_ptr<char[]> buffer_;  // with room for capacity_ bytes
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;

  // Reads everything. before: what the source says of its file, if it is one. Returns whether the end was
  // met: reading stops at a NUL byte, and at more bytes than the file has.
  bool readAll(ByteSource& source, const std::optional<FileStamp>& before);
  void makeRoom(std::uint64_t expectedBytes);
  void checkUnchanged(const FileStamp& before, const FileStamp& after, bool metEnd) const;
};

}  // namespace korassoc::cli
