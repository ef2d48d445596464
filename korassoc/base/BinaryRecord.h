// The binary form of every saved record: little-endian values one after the other, nothing between them.

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <istream>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korassoc::detail {

inline constexpr std::size_t kInt32Bytes = 4;
inline constexpr std::size_t kFloat64Bytes = 8;

// One value in little-endian bytes, at a place that has room for it; for files with a layout of their own.
inline void storeInt32(char* to, std::int32_t value) {
  // The compiler makes one move of it where the machine is little-endian; of its counterpart as well.
  const auto bits = std::bit_cast<std::uint32_t>(value);
  for (int i = 0; i < 4; ++i) to[i] = static_cast<char>(static_cast<unsigned char>(bits >> (8 * i)));
}
inline std::int32_t loadInt32(const char* from) {
  std::uint32_t bits = 0;
  for (int i = 0; i < 4; ++i) {
    bits |= static_cast<std::uint32_t>(static_cast<unsigned char>(from[i])) << (8 * i);
  }
  return std::bit_cast<std::int32_t>(bits);
}
void storeFloat64(char* to, double value);
double loadFloat64(const char* from);

// Writes one record, and counts its bytes. Small values are gathered and handed to the stream in larger
// pieces:
//
//   BinaryWriter record(stream);
//   record.tag("CSD");
//   record.int32(count);
//   record.int32(tid);
//   return record.finish();
//
// A record that holds another one calls finish() before the inner record's writer starts, and may go on after
// it. Errors: a stream that takes less than it is given gets its bad bit; a stream that has failed is left
// alone. The count goes on all the same, so the caller looks at the stream's state.
class BinaryWriter {
 public:
  explicit BinaryWriter(std::ostream& out) : out_(out) {}
  ~BinaryWriter();  // hands over what is left, without ever throwing
  BinaryWriter(const BinaryWriter&) = delete;
  BinaryWriter& operator=(const BinaryWriter&) = delete;

  void tag(std::string_view characters) { bytes(characters.data(), characters.size()); }
  void int32(std::int32_t value);
  void int32s(std::span<const std::int32_t> values);
  void float64(double value);
  void flag(bool value);  // the character 1 or 0

  // Length with the terminating zero as an int, then the characters and the zero. Requires text without zeros
  // and shorter than 2^31 - 1.
  void text(std::string_view characters);
  void bytes(const char* data, std::size_t size);

  // A place for the next size bytes, to be filled at once. size is at most kLargestRoom.
  char* room(std::size_t size) {
    if (buffer_.size() - used_ < size) finish();
    char* place = buffer_.data() + used_;
    used_ += size;
    count_ += size;
    return place;
  }
  static constexpr std::size_t kLargestRoom = 256;

  // Hands everything gathered so far to the stream (without flushing the stream itself). Returns the bytes
  // written through this writer since it was made.
  std::uint64_t finish();

 private:
  std::ostream& out_;
  std::uint64_t count_ = 0;
  std::size_t used_ = 0;
  std::array<char, kLargestRoom> buffer_;  // its first used_ bytes wait for the stream
};

// Reads one record, and counts its bytes. It never reads beyond what it is asked for, so the next reader
// finds the stream where this record ended:
//
//   BinaryReader record(stream);
//   if (!record.tag("CSD") || !record.int32s({&count, &tid, &maxMissed})) ...refuse...
//
// A record of many small parts may be fetched in larger pieces: who knows that at least so many bytes are
// still to come, whatever the parts turn out to be, says so with expect().
//
// Every read answers false when the stream has failed or ends too early; the stream then has its fail bit
// (and its end bit), the targets that were not filled keep their values, and all further reads are false too.
class BinaryReader {
 public:
  explicit BinaryReader(std::istream& in) : in_(in) {}
  BinaryReader(const BinaryReader&) = delete;
  BinaryReader& operator=(const BinaryReader&) = delete;

  // Reads as many characters as expected has and says whether they are the same. What was read goes to found
  // (as many characters as the stream gave).
  bool tag(std::string_view expected, std::string* found = nullptr);
  bool int32(std::int32_t& value);
  bool int32s(std::initializer_list<std::int32_t*> targets);  // in order, all or none; at most 16
  bool int32s(std::span<std::int32_t> values);
  bool float64(double& value);
  bool character(char& value);

  // Reads count ints into values (emptied first). The memory grows with what the stream really gives, never
  // on the word of count; a negative count is refused.
  bool int32s(std::vector<std::int32_t>& values, std::int32_t count);

  // Reads a length that counts a terminating zero and as many bytes. The text ends at the first zero. Refuses
  // a length below 1 or beyond the end of the stream, and a text without its zero; memory grows as above.
  bool text(std::string& value);

  // Whether the stream still holds that many bytes: looks up where the stream ends, so ask once for a record.
  // A stream that cannot tell where it ends answers true.
  bool holds(std::uint64_t bytes);

  // Allows to fetch up to so many bytes from here on before they are asked for. To be said only of bytes that
  // belong to this record for certain, should it be a good one.
  void expect(std::uint64_t bytes) {
    const std::size_t fetched = end_ - next_;
    expected_ = bytes > fetched ? bytes - fetched : 0;
  }

  // The next bytes, when so many have been fetched already; null otherwise. For who takes a part of the
  // record at one look; take() goes past them.
  const char* fetched(std::size_t size) const {
    return end_ - next_ >= size ? fetched_.data() + next_ : nullptr;
  }
  void take(std::size_t size) {
    next_ += size;
    count_ += size;
  }

  // Bytes read through this reader.
  std::uint64_t count() const { return count_; }

 private:
  bool raw(char* to, std::size_t size) {
    if (end_ - next_ < size) return fetch(to, size);
    std::memcpy(to, fetched_.data() + next_, size);
    next_ += size;
    count_ += size;
    return true;
  }
  bool fetch(char* to, std::size_t size);
  bool mayHold(std::uint64_t bytes);

  std::istream& in_;
  std::uint64_t count_ = 0;
  std::uint64_t expected_ = 0;  // bytes that may be fetched beyond those that are there
  std::vector<char> fetched_;   // those at next_ to end_ wait to be asked for
  std::size_t next_ = 0;
  std::size_t end_ = 0;
};

}  // namespace korassoc::detail
