// The file layer under the spill store.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace korassoc::detail {

// Bytes that are read and written at offsets, as the spill store needs them. An interface, so that the
// store's behaviour on a disk that fails can be shown without one.
// Errors: answers, never exceptions.
class SpillFile {
 public:
  virtual ~SpillFile();  // closes and removes the file

  virtual const std::string& name() const = 0;
  // Returns how many bytes were read: fewer than asked for at the end of the file or on an error.
  virtual std::size_t read(std::uint64_t offset, char* bytes, std::size_t size) = 0;
  // False when not all bytes were written; how many were is then open.
  virtual bool write(std::uint64_t offset, const char* bytes, std::size_t size) = 0;
  // Makes the file size bytes long; what is added reads as zero.
  virtual bool resize(std::uint64_t size) = 0;
};

// The file on the disk: the named one, emptied, or for a null or empty name a new one of the current user's
// own in the temporary directory. Null when it cannot be opened.
std::unique_ptr<SpillFile> openSpillFile(const char* name);

}  // namespace korassoc::detail
