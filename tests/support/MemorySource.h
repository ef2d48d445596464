// An input without a file.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

#include "cli/input/InputFile.h"

// Hands out bytes in blocks of at most so many, either once, as a pipe does, or as often as it is asked to. The
// bytes must outlive it.
class MemorySource : public korassoc::cli::ByteSource {
 public:
  explicit MemorySource(std::string_view bytes, std::size_t longestBlock = 1 << 16, bool restarts = false)
      : bytes_(bytes), left_(bytes), longestBlock_(longestBlock), restarts_(restarts) {}

  std::size_t read(char* to, std::size_t bytes) override {
    const std::size_t got = std::min({bytes, left_.size(), longestBlock_});
    if (got > 0) std::memcpy(to, left_.data(), got);
    left_.remove_prefix(got);
    return got;
  }
  std::optional<korassoc::cli::FileStamp> stamp() override { return std::nullopt; }
  bool restart() override {
    if (restarts_) left_ = bytes_;
    return restarts_;
  }

 private:
  std::string_view bytes_;
  std::string_view left_;
  std::size_t longestBlock_;
  bool restarts_;
};
