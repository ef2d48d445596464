// The file layer under the spill store.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
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
  virtual std::uint64_t size() const = 0;  // bytes
  // Returns how many bytes were read: fewer than asked for at the end of the file or on an error.
  virtual std::size_t read(std::uint64_t offset, char* bytes, std::size_t size) = 0;
  // False when not all bytes were written; how many were is then open.
  virtual bool write(std::uint64_t offset, const char* bytes, std::size_t size) = 0;
  // Makes the file size bytes long; what is added reads as zero.
  virtual bool resize(std::uint64_t size) = 0;
};

// Looks at a file that is there already and answers whether a spill store has left it behind.
using RecognizesLeftover = std::function<bool(SpillFile& file)>;

// An empty file on the disk. Without a name (null or empty) it is a new one of the current user's own that
// nobody else can reach. With one it is a new file, too, or a regular file of the current user's that is
// empty or recognized as a leftover: nothing else that exists is changed, and no link is followed. Null when
// there is no such file or another SpillFile has it open.
std::unique_ptr<SpillFile> openSpillFile(const char* name, const RecognizesLeftover& recognizes);

}  // namespace korassoc::detail
