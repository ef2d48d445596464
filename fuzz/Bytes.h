// Makes a fuzz target's input into the arguments of calls, one after the other.

#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

// Hands out the input from its front. When it is used up everything is 0 or empty, so that any input is a
// whole sequence of calls and a prefix of one is another.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool isEmpty() const { return next_ == size_; }

  int byte() { return isEmpty() ? 0 : data_[next_++]; }
  bool flag() { return byte() % 2 != 0; }
  // 0 <= result < bound, from one byte; bound: at most 256.
  int below(int bound) { return byte() % bound; }
  int between(int low, int high) { return low + below(high - low + 1); }

  int anyInt() { return static_cast<int>(bits(4)); }
  double anyDouble() { return std::bit_cast<double>(bits(8)); }

  // A length in one byte, then as many bytes as it says and the input still has.
  std::string text() {
    const auto wanted = static_cast<std::size_t>(byte());  // taken before it is asked what is left
    const std::size_t length = std::min(wanted, size_ - next_);
    std::string result(reinterpret_cast<const char*>(data_) + next_, length);
    next_ += length;
    return result;
  }

 private:
  std::uint64_t bits(int bytes) {
    std::uint64_t result = 0;
    for (int i = 0; i < bytes; ++i) result |= static_cast<std::uint64_t>(byte()) << (8 * i);
    return result;
  }

  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t next_ = 0;
};

}  // namespace fuzz
