// The bytes of an input, in memory of our own.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "cli/input/Input.h"

namespace korassoc::cli {

// FileContent holds a whole input in memory for as long as it lives. It is a copy and not a mapping: whoever
// reads it looks at the same bytes as often as it likes, whatever other programs do to the file.
class FileContent {
 public:
  // Reads the input to its end. Throws CliError (kInput) as Input does. Reading stops after the first block with
  // a NUL byte, which no text has, so that an endless device ends at once; whoever reads the text meets the
  // byte.
  explicit FileContent(Input& input);

  std::string_view bytes() const { return {buffer_.get(), size_}; }

  // How messages call the input.
  const std::string& name() const { return name_; }

 private:
  std::string name_;
  std::unique_ptr<char[]> buffer_;  // with room for capacity_ bytes
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;

  void makeRoom(std::uint64_t expectedBytes);
};

}  // namespace korassoc::cli
