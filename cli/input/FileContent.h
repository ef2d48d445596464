// The bytes of the input: a mapped file where the platform can, else read in large blocks.

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace korassoc::cli {

// FileContent holds a whole input in memory for as long as it lives. Regular files are mapped where the
// platform offers it, so their pages are read once and can be dropped by the system; pipes, terminals and
// standard input are read in blocks that double.
//
// A mapped file must not be cut short by another program while it is read; the system then ends the run.
class FileContent {
 public:
  // Opens the file; "-" is standard input. Throws CliError (kInput) when it is missing, a directory or not
  // readable. Reading in blocks stops after the first block with a NUL byte, which no text has, so that an
  // endless device ends at once; whoever reads the text meets the byte.
  static FileContent open(const std::string& path);

  FileContent(FileContent&&) noexcept;
  FileContent& operator=(FileContent&&) noexcept;
  ~FileContent();

  std::string_view bytes() const { return {data_, size_}; }

  // How messages call the input: the path as given (unprintable characters escaped), or "standard input".
  const std::string& name() const { return name_; }

 private:
  FileContent() = default;

  std::string name_;
  std::unique_ptr<char[]> buffer_;  // null when the file is mapped
  const char* data_ = nullptr;
  std::size_t size_ = 0;
  bool mapped_ = false;

  bool map(int descriptor, std::size_t size);
  void readBlocks(int descriptor, std::size_t expectedBytes);
  void unmap() noexcept;
};

}  // namespace korassoc::cli
