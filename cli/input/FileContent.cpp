#include "cli/input/FileContent.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

#include "cli/CliError.h"
#include "cli/Printable.h"

namespace korassoc::cli {
namespace {

constexpr std::size_t kFirstRoom = std::size_t{1} << 16;
constexpr std::size_t kLongestBlock = std::size_t{1} << 20;

[[noreturn]] void failToRead(const std::string& name, const std::error_code& error) {
  if (error.value() == EISDIR) {
    throw CliError(ExitCode::kInput, name + ": is a directory; give the basket file in it");
  }
  throw CliError(ExitCode::kInput,
                 name + ": cannot be read: " + error.message() + "; check the path and its permissions");
}

std::uint64_t bytesLeft(const FileStamp& stamp) {
  return stamp.size > stamp.position ? stamp.size - stamp.position : 0;
}

}  // namespace

FileContent FileContent::open(const std::string& path) {
  if (path.empty()) {
    throw CliError(ExitCode::kInput, "the file name is empty; give a basket file, or - for standard input");
  }
  const std::string name = path == "-" ? "standard input" : printable(path);
  try {
    InputFile file(path);
    return take(file, name);
  } catch (const std::system_error& error) {
    failToRead(name, error.code());
  }
}

FileContent FileContent::take(ByteSource& source, std::string name) {
  FileContent content(std::move(name));
  try {
    const auto before = source.stamp();
    const bool metEnd = content.readAll(source, before);
    const auto after = before ? source.stamp() : std::nullopt;
    if (before && after) content.checkUnchanged(*before, *after, metEnd);
  } catch (const std::system_error& error) {
    failToRead(content.name_, error.code());
  }
  return content;
}

bool FileContent::readAll(ByteSource& source, const std::optional<FileStamp>& before) {
  const std::uint64_t expectedBytes = before ? bytesLeft(*before) : 0;
  for (;;) {
    if (size_ == capacity_) makeRoom(expectedBytes);
    char* const block = buffer_.get() + size_;
    const std::size_t got = source.read(block, std::min(capacity_ - size_, kLongestBlock));
    if (got == 0) return true;
    size_ += got;
    if (std::memchr(block, 0, got) != nullptr) return false;  // the text check names the place
    if (before && size_ > expectedBytes) {
      // A file that grows as fast as it is read must have an end. One that still tells no size goes on.
      const auto now = source.stamp();
      if (now && now->size > 0) return false;
    }
  }
}

// The first room does not depend on what the file says of its size, which for some of the system's own is
// beyond any memory: they show a NUL byte, or their end, before that counts.
void FileContent::makeRoom(std::uint64_t expectedBytes) {
  std::size_t capacity = kFirstRoom;
  if (capacity_ > 0) {
    if (capacity_ > std::numeric_limits<std::size_t>::max() / 2) throw std::bad_alloc();
    capacity = capacity_ * 2;
    // One byte more than expected, so that the end of the file is met without growing.
    if (expectedBytes > size_) {
      if (expectedBytes >= std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
      capacity = static_cast<std::size_t>(expectedBytes) + 1;
    }
  }
  auto larger = std::make_unique_for_overwrite<char[]>(capacity);
  if (size_ > 0) std::memcpy(larger.get(), buffer_.get(), size_);
  buffer_ = std::move(larger);
  capacity_ = capacity;
}

void FileContent::checkUnchanged(const FileStamp& before, const FileStamp& after, bool metEnd) const {
  std::string how;
  if (before.size != after.size) {
    how = fmt::format("{} bytes at first, {} at the end", before.size, after.size);
  } else if (!before.isOfSameContent(after)) {
    how = fmt::format("{} bytes as before, but written to", after.size);
  } else if (before.size > 0 && (size_ > bytesLeft(before) || (metEnd && size_ < bytesLeft(before)))) {
    how = fmt::format("{} bytes to read, but {} were found", bytesLeft(before), size_);
  } else {
    return;
  }
  throw CliError(ExitCode::kInput,
                 fmt::format("{}: another program changed it while it was read ({}); try again when it is "
                             "complete, or give a copy of it",
                             name_, how));
}

}  // namespace korassoc::cli
