// A file of the operating system, read and written at byte offsets, that is removed when it is closed.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace korassoc::detail {

// A scratch file. Whatever stands on the disk when it is opened is neither emptied nor followed to somewhere
// else; removing the file is part of closing it.
//
// No call moves a shared position, so every read and write says where.
// Bytes that were never written inside the size given by resize() read as zero and, where the file system
// allows, take no room on the disk.
// A file that somebody removes under the object stays usable where open files outlive their names (POSIX);
// the name is removed at the end only while it still names this very file.
// A file with a name is locked while it is open, for this class alone: openLeftover() refuses it then, in
// this process and in others. Everybody else may read and write it.
// Errors: answers, never exceptions (an allocation that fails while opening propagates).
class PlatformFile {
 public:
  // A new file in the temporary directory, for the current user alone. It has no name any more once it is
  // open, so that nothing is left of it however the process ends; where the system does not allow that
  // (Windows), the system removes it when it is closed. Null when it cannot be made.
  static std::unique_ptr<PlatformFile> createTemporary(std::string_view namePrefix);
  // A new file of that name, for the current user alone, that keeps its name while it is open. Null when it
  // cannot be made: the name is taken, if only by a link to nowhere.
  static std::unique_ptr<PlatformFile> createNamed(const std::string& name);
  // The file that has the name already, as it is: closing it lets it stay unless takeOver() was called. Null
  // for what is no regular file of the current user's under this name alone, and while another object has it
  // open. Pipes, devices and links are not so much as opened.
  static std::unique_ptr<PlatformFile> openLeftover(const std::string& name);

  PlatformFile(const PlatformFile&) = delete;
  PlatformFile& operator=(const PlatformFile&) = delete;
  ~PlatformFile();  // closes and removes

  // Empties a leftover, which is removed at the end from then on. False when it cannot be emptied.
  bool takeOver();

  // The path. That of a temporary file leads to nothing any more.
  const std::string& name() const { return name_; }
  // In bytes; 0 when the system does not tell.
  std::uint64_t size() const;

  // Reads up to size bytes from offset on. Returns how many were read: fewer at the end of the file or when
  // the system fails.
  std::size_t read(std::uint64_t offset, char* bytes, std::size_t size);
  // Writes size bytes from offset on. False when not all of them were written; how many were is then open.
  bool write(std::uint64_t offset, const char* bytes, std::size_t size);
  // Makes the file size bytes long; what is added reads as zero.
  bool resize(std::uint64_t size);

 private:
  using Open = int (*)(const char* name);
  explicit PlatformFile(std::string name) : name_(std::move(name)) {}
  static std::unique_ptr<PlatformFile> open(std::string name, Open openIt);

  int descriptor_ = -1;
  std::string name_;
  bool isRemovedAtEnd_ = true;
};

}  // namespace korassoc::detail
