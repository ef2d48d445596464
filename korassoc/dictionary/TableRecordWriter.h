// Writes the record of a table of sets in a binary state.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/ItemSetRecord.h"

namespace korassoc::detail {

// The usual entry of a record: a set that is not too long, with a descriptor of phase I.
//
//   "IS:" 0 | length | items ... | "CSD" | count | TID | max missed
struct UsualEntry {
  static constexpr int kMostItems = 16;
  static constexpr std::string_view kTag = "CSD";

  static constexpr std::size_t setBytes(int length) {
    return kItemSetHeadBytes + 4 * static_cast<std::size_t>(length);
  }
  static constexpr std::size_t bytes(int length) { return setBytes(length) + kTag.size() + 12; }
};

// "HT", the number of entries, then the records of key and descriptor of each. Nothing is added to a stream
// that has failed.
class TableRecordWriter {
 public:
  TableRecordWriter(std::fstream& stream, int entries);

  void add(const ItemSet& set, const SetCounter& descriptor);
  // The bytes written. To be called last.
  std::uint64_t finish();

 private:
  bool addUsual(const ItemSet& set, const SetCounter& descriptor);

  std::fstream& stream_;
  BinaryWriter record_;
  std::uint64_t besides_ = 0;  // bytes of descriptors that write themselves
};

}  // namespace korassoc::detail
