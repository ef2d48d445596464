#include "korassoc/dictionary/TableRecordWriter.h"

#include <cstring>
#include <fstream>
#include <typeinfo>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/DescriptorRecord.h"

namespace korassoc::detail {

static_assert(UsualEntry::bytes(UsualEntry::kMostItems) <= BinaryWriter::kLargestRoom);

TableRecordWriter::TableRecordWriter(std::fstream& stream, int entries) : stream_(stream), record_(stream) {
  record_.tag("HT");
  record_.int32(entries);
}

void TableRecordWriter::add(const ItemSet& set, const SetCounter& descriptor) {
  if (!stream_.good() || addUsual(set, descriptor)) return;
  writeItems(record_, set);
  besides_ += writeDescriptor(stream_, record_, descriptor);
}

// False, with nothing written, for any other entry.
bool TableRecordWriter::addUsual(const ItemSet& set, const SetCounter& descriptor) {
  const int length = set.length();
  if (length > UsualEntry::kMostItems || typeid(descriptor) != typeid(CarmaSetDescriptor)) return false;
  const auto& counts = static_cast<const CarmaSetDescriptor&>(descriptor);
  char* to = record_.room(UsualEntry::bytes(length));
  std::memcpy(to, kItemSetTag.data(), 4);
  storeInt32(to + 4, length);
  for (int i = 0; i < length; ++i) storeInt32(to + 8 + std::ptrdiff_t{4} * i, set.getItemAt(i));
  to += UsualEntry::setBytes(length);
  std::memcpy(to, UsualEntry::kTag.data(), UsualEntry::kTag.size());
  to += UsualEntry::kTag.size();
  storeInt32(to, counts.count);
  storeInt32(to + 4, counts.TID);
  storeInt32(to + 8, counts.maxMissed);
  return true;
}

std::uint64_t TableRecordWriter::finish() { return record_.finish() + besides_; }

}  // namespace korassoc::detail
