// A std::fstream over memory: for records, whose operations ask for one.

#pragma once

#include <bit>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>

#include "tests/support/FailingBuffer.h"

class RecordStream {
 public:
  RecordStream() : RecordStream(std::string()) {}
  explicit RecordStream(const std::string& bytes)
      : buffer_(bytes, std::ios::in | std::ios::out | std::ios::ate | std::ios::binary) {
    static_cast<std::ios&>(stream_).rdbuf(&buffer_);  // also clears the state of the file that is not open
  }
  RecordStream(const RecordStream&) = delete;
  RecordStream& operator=(const RecordStream&) = delete;

  std::fstream& stream() { return stream_; }
  std::string bytes() const { return buffer_.str(); }
  // What a reader has not taken yet.
  std::string left() {
    const std::streamoff at = buffer_.pubseekoff(0, std::ios::cur, std::ios::in);
    return at < 0 ? std::string() : buffer_.str().substr(static_cast<std::size_t>(at));
  }

 private:
  std::stringbuf buffer_;
  std::fstream stream_;
};

// A std::fstream that takes so many bytes and refuses the rest.
class FailingRecordStream {
 public:
  explicit FailingRecordStream(std::size_t bytes) : buffer_(bytes) {
    static_cast<std::ios&>(stream_).rdbuf(&buffer_);
  }
  FailingRecordStream(const FailingRecordStream&) = delete;
  FailingRecordStream& operator=(const FailingRecordStream&) = delete;

  std::fstream& stream() { return stream_; }
  const std::string& bytes() const { return buffer_.text(); }

 private:
  FailingBuffer buffer_;
  std::fstream stream_;
};

// The four bytes of an int in a record.
inline std::string int32Bytes(int value) {
  const auto bits = static_cast<std::uint32_t>(value);
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((bits >> shift) & 0xFFU);
  return bytes;
}

inline std::string int32Bytes(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) bytes += int32Bytes(value);
  return bytes;
}

// The eight bytes of a double in a record.
inline std::string float64Bytes(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  std::string bytes;
  for (int shift = 0; shift < 64; shift += 8) bytes += static_cast<char>((bits >> shift) & 0xFFU);
  return bytes;
}

// What a length or a count is replaced by to see what a reader makes of it.
inline constexpr std::initializer_list<int> kLyingNumbers = {-1, 0, 2147483647, -2147483647 - 1, 1000000};
