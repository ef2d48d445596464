// The support thresholds that phase I has seen, and the average that its bounds are made of.

#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <vector>

// The transactions so far, in chunks of neighbours, each chunk with one ceiling: the threshold of its
// transactions, raised to the highest threshold that came after them. Thresholds are fractions.
//
//   thresholds     5 5 3 3 4  (hundredths)
//   chunks         count 2 ceiling 5 | count 3 ceiling 4      the 4 raised the chunk of the 3s and joined it
//   average        (2 * 5 + 3 * 4) / 5 = 4.4
//
// A decrease opens a chunk, so ceilings never rise from one chunk to the next. The average of equal and
// decreasing thresholds is kept as a running mean, and computed anew from the chunks when a threshold rises.
// Cost: add() O(1) amortized over thresholds that do not rise, else O(chunks raised). Memory: 24 bytes
// a chunk.
class CeilArray {
 public:
  // Prepared for a number of chunks; more are handled too. A number below 1 is as good as 1.
  explicit CeilArray(int capacity);

  // Takes in the threshold of the next transaction.
  void add(double support);

  double average() const { return average_; }  // 0 before the first threshold
  int total() const { return total_; }         // transactions taken in; saturates
  int used() const { return static_cast<int>(chunks_.size()); }

  // A chunk's transactions and its ceiling. Requires 0 <= chunk < used().
  int count(int chunk) const { return chunks_[static_cast<std::size_t>(chunk)].count; }
  double ceiling(int chunk) const { return chunks_[static_cast<std::size_t>(chunk)].ceiling; }

  // The binary record, "CA"; the length in bytes. Writing stops early when the stream fails, which the caller
  // finds in the stream's state.
  std::uint64_t writeObject(std::fstream& stream) const;

  // A wrong tag, or a stream that has failed, leaves an empty array after a line to standard error, and the
  // stream behind the two bytes of the tag. Anything else that is wrong throws an IOException, as a pointer:
  // without a line when a chunk is out of order, else after that same line.
  std::uint64_t readObject(std::fstream& stream);

  // The record of the XML format, the same values in the same order; the number of lines. Reading throws an
  // IOException, as a pointer, on any line that is not as it should be: without a line of its own when a
  // chunk is out of order, else after the line to standard error.
  std::uint64_t writeObjectXML(std::ostream& stream) const;
  std::uint64_t readObjectXML(std::ifstream& stream);

 private:
  struct Chunk {
    int count;
    double ceiling;
    double weightBefore;  // the sum of count * ceiling over the chunks before this one, in their order
  };

  void append(double ceiling, int count);
  void open(double ceiling, int count);
  void raise(double ceiling);

  std::vector<Chunk> chunks_;
  bool descending_ = true;  // no ceiling exceeds the one before; a record that was read may break it
  double average_ = 0.0;
  int total_ = 0;
};
