// An input as the system hands it out: bytes, and what it says of the file they come from.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace korassoc::cli {

// What the system says of a regular file at one moment.
struct FileStamp {
  std::uint64_t size = 0;      // bytes
  std::uint64_t position = 0;  // how many of them are read
  std::int64_t modifiedSeconds = 0;
  std::int64_t modifiedNanoseconds = 0;  // 0 where the system keeps seconds alone

  // Whether the file was written to between the two looks, as far as the system can tell: it may keep times
  // in steps of a few milliseconds.
  bool isOfSameContent(const FileStamp& other) const {
    return size == other.size && modifiedSeconds == other.modifiedSeconds &&
           modifiedNanoseconds == other.modifiedNanoseconds;
  }
};

// Where an Input takes its bytes from. Errors: all throw std::system_error.
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  // Reads what comes next, at most so many bytes (more than 0). Returns how many; 0 at the end.
  virtual std::size_t read(char* to, std::size_t bytes) = 0;
  // Nothing for what is no regular file.
  virtual std::optional<FileStamp> stamp() = 0;
  // Goes back to where reading began. Returns false, with nothing changed, where that cannot be: in a pipe, say.
  virtual bool restart() = 0;
};

// An open file, device or pipe.
class InputFile : public ByteSource {
 public:
  // Opens the file; "-" is standard input, which stays open afterwards. Throws std::system_error; for a
  // directory, with EISDIR.
  explicit InputFile(const std::string& path);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() override;

  std::size_t read(char* to, std::size_t bytes) override;
  std::optional<FileStamp> stamp() override;
  bool restart() override;  // regular files alone

 private:
  int descriptor_;
  std::int64_t start_ = 0;  // standard input may have been read from already
};

}  // namespace korassoc::cli
