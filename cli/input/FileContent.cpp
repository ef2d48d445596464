#include "cli/input/FileContent.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace korassoc::cli {
namespace {

constexpr std::size_t kFirstRoom = std::size_t{1} << 16;
constexpr std::size_t kLongestBlock = std::size_t{1} << 20;
constexpr std::uint64_t kMostExpected = sizeof(std::size_t) < 8 ? 1U << 30 : std::uint64_t{1} << 36;

}  // namespace

FileContent::FileContent(Input& input) : name_(input.name()) {
  for (;;) {
    if (size_ == capacity_) makeRoom(input.expectedBytes());
    char* const block = buffer_.get() + size_;
    const std::size_t got = input.read(block, std::min(capacity_ - size_, kLongestBlock));
    if (got == 0) break;
    size_ += got;
    if (std::memchr(block, 0, got) != nullptr) break;  // the text check names the place
  }
  input.finish();
}

// A file can claim a size beyond any memory, as some of the system's own do: they show a NUL byte, or their end,
// in the first room or in what is made as they come.
void FileContent::makeRoom(std::uint64_t expectedBytes) {
  std::size_t capacity = std::max(kFirstRoom, capacity_ * 2);
  std::unique_ptr<char[]> larger;
  if (capacity_ > 0 && expectedBytes > size_ && expectedBytes < kMostExpected) {
    // One byte more than expected, so that the end of the file is met without growing.
    const auto whole = static_cast<std::size_t>(expectedBytes) + 1;
    larger.reset(new (std::nothrow) char[whole]);
    if (larger) capacity = whole;
  }
  if (!larger) larger = std::make_unique_for_overwrite<char[]>(capacity);
  if (size_ > 0) std::memcpy(larger.get(), buffer_.get(), size_);
  buffer_ = std::move(larger);
  capacity_ = capacity;
}

}  // namespace korassoc::cli
