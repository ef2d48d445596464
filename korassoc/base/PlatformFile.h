// A file of the operating system, read and written at byte offsets, that is removed when it is closed.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace korassoc::detail {

// A scratch file: it is empty when it is opened, and removing it is part of closing it.
//
// No call moves a shared position, so every read and write says where.
// Bytes that were never written inside the size given by resize() read as zero and, where the file system
// allows, take no room on the disk.
// A file that somebody removes under the object stays usable where open files outlive their names (POSIX);
// the name is removed at the end only while it still names this very file.
// Errors: answers, never exceptions (an allocation that fails while opening propagates).
class PlatformFile {
 public:
  // A new file in the temporary directory: created exclusively, so no file or link of anybody else is ever
  // taken over, and readable and writable by the current user alone. Null when it cannot be made.
  static std::unique_ptr<PlatformFile> createTemporary(std::string_view namePrefix);
  // The file of that name, made (for the current user alone) or emptied. Null when it cannot be opened.
  static std::unique_ptr<PlatformFile> createNamed(const std::string& name);

  PlatformFile(const PlatformFile&) = delete;
  PlatformFile& operator=(const PlatformFile&) = delete;
  ~PlatformFile();  // closes and removes

  const std::string& name() const { return name_; }

  // Reads up to size bytes from offset on. Returns how many were read: fewer at the end of the file or when
  // the system fails.
  std::size_t read(std::uint64_t offset, char* bytes, std::size_t size);
  // Writes size bytes from offset on. False when not all of them were written; how many were is then open.
  bool write(std::uint64_t offset, const char* bytes, std::size_t size);
  // Makes the file size bytes long; what is added reads as zero.
  bool resize(std::uint64_t size);

 private:
  PlatformFile(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}
  static std::unique_ptr<PlatformFile> open(std::string name, int flags);

  int descriptor_;
  std::string name_;
};

}  // namespace korassoc::detail
