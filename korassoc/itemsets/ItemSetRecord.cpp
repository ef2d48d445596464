#include "korassoc/itemsets/ItemSetRecord.h"

#include <cstddef>
#include <fstream>
#include <iostream>
#include <utility>

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;

namespace korassoc::detail {

void writeItems(BinaryWriter& record, const ItemSet& set) {
  record.tag(kItemSetTag);
  record.int32(set.length());
  record.int32s({set.getTheArray(), static_cast<std::size_t>(set.length())});
}

bool readItems(BinaryReader& record, std::int32_t& length, std::vector<int>& items) {
  if (!record.tag(kItemSetTag) || !record.int32(length)) return false;
  if (length >= 0) return record.int32s(items, length);
  items.clear();
  return true;
}

}  // namespace korassoc::detail

std::uint64_t ItemSet::writeObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  record.tag(korassoc::detail::kItemSetTag);
  record.int32(length());
  std::uint64_t bytes = record.finish();
  for (int i = 0; i < length() && stream.good(); ++i) {  // what a failed stream was not given does not count
    record.int32(getItemAt(i));
    bytes = record.finish();
  }
  return bytes;
}

std::uint64_t ItemSet::readObject(std::fstream& stream) {
  BinaryReader record(stream);
  std::int32_t length = 0;
  std::vector<int> items;
  if (!korassoc::detail::readItems(record, length, items)) {
    std::cout << "Failure reading ItemSet!\n";
    return 0;
  }
  if (length >= 0) *this = ItemSet(items.data(), length);
  itemSetHash();
  next_ = prev_ = nullptr;
  return record.count();
}
