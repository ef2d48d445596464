// The table's records, binary and XML, and the order that reading gives it.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/base/Prefetch.h"
#include "korassoc/dictionary/DescriptorRecord.h"
#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/TableObjectWriter.h"
#include "korassoc/dictionary/TableRecordWriter.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/itemsets/ItemSetRecord.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::kFrameLines;
using korassoc::detail::PackedLevel;
using korassoc::detail::prefetch;
using korassoc::detail::UsualEntry;

namespace {

using Entry = HashTable::Entry;

constexpr int kAnyLength = -1;
constexpr std::uint64_t kHeadBytes = 6;  // "HT" and the number of entries

// The entries between one that is put into its chain and the one whose bucket is fetched.
constexpr int kAhead = 16;

// The number of buckets of a table that is read with so many entries: never a multiple of 2 or 3, but for the
// largest tables.
int bucketsFor(int entries) {
  constexpr double kMost = std::numeric_limits<int>::max() - 2;
  const auto buckets = static_cast<int>(std::min(entries * 1.55, kMost));
  constexpr int kStep[] = {1, 0, -1, 2, 1, 0};  // by the remainder of 6
  return buckets + kStep[buckets % 6];
}

// Entries on their way into a table, in the order in which they came, or into a packed level as long as it
// can hold them all. Memory grows with them, not with the number that a record claims.
class EntryList {
 public:
  using Packed = HashTable::Packed;

  EntryList(HashTable& table, Entry* first) : table_(table), first_(first) {}
  // packed: as of HashTable::readLevel().
  EntryList(HashTable& table, int setLength, int entries, Packed* packed) : table_(table), first_(nullptr) {
    if (packed == nullptr || entries < 1) return;
    *packed = std::make_unique<PackedLevel>(setLength, bucketsFor(entries));
    packed_ = packed;
  }
  EntryList(const EntryList&) = delete;
  EntryList& operator=(const EntryList&) = delete;
  ~EntryList() {
    while (first_ != nullptr) deleteFront();
  }

  bool isPacked() const { return packed_ != nullptr; }
  Entry* front() const { return first_; }
  Entry* popFront() { return std::exchange(first_, first_->next); }
  void deleteFront() { table_.release(popFront()); }

  void append(std::unique_ptr<ItemSet> set, std::unique_ptr<SetCounter> descriptor) {
    if (isPacked() && packs(*set, *descriptor)) return;
    append(new Entry{set.get(), descriptor.get(), nullptr});
    static_cast<void>(set.release());
    static_cast<void>(descriptor.release());
  }
  void append(ItemSet&& set, const CarmaSetDescriptor& descriptor) {
    if (isPacked() && packs(set, descriptor)) return;
    append(table_.makeEntry(std::move(set), descriptor));
  }
  // The whole chain; the caller owns it.
  Entry* release() { return std::exchange(first_, nullptr); }

 private:
  void append(Entry* entry) {
    (first_ == nullptr ? first_ : last_->next) = entry;
    last_ = entry;
  }
  // Packs the set; one that is there already is dropped. False when it cannot be: then none is packed.
  bool packs(const ItemSet& set, const SetCounter& descriptor) {
    PackedLevel& level = **packed_;
    const ItemSetView view(set);
    if (level.canHold(set, descriptor)) {
      if (!level.find(view).isStored()) level.add(view, static_cast<const CarmaSetDescriptor&>(descriptor));
      return true;
    }
    level.forEachAdded([this](ItemSet&& added, const CarmaSetDescriptor& counts) {
      append(table_.makeEntry(std::move(added), counts));
    });
    packed_->reset();
    packed_ = nullptr;
    return false;
  }

  HashTable& table_;
  Entry* first_;
  Entry* last_ = nullptr;     // of what was appended
  Packed* packed_ = nullptr;  // null: what comes is appended
};

bool isRightLength(int length, int expected) { return expected == kAnyLength || length == expected; }

[[noreturn]] void refuseEntry() {
  std::cout << "Problem reading Hashtable.\n";
  throw new IOException();
}

// In the table of one size of sets, which is the dictionary's own, the usual entry takes a block of the
// table's pool. False, with nothing taken, for any other entry, and when its bytes are not all there.
bool readUsualEntry(BinaryReader& record, char descriptorType, int setLength, EntryList& entries) {
  using korassoc::detail::loadInt32;
  if (descriptorType != korassoc::detail::kCarmaDescriptors || setLength < 0 ||
      setLength > UsualEntry::kMostItems) {
    return false;
  }
  const char* from = record.fetched(UsualEntry::bytes(setLength));
  if (from == nullptr || std::string_view(from, 4) != korassoc::detail::kItemSetTag ||
      loadInt32(from + 4) != setLength ||
      std::string_view(from + UsualEntry::setBytes(setLength), UsualEntry::kTag.size()) != UsualEntry::kTag) {
    return false;
  }
  std::array<int, UsualEntry::kMostItems> items;
  for (int i = 0; i < setLength; ++i)
    items[static_cast<std::size_t>(i)] = loadInt32(from + 8 + std::ptrdiff_t{4} * i);
  from += UsualEntry::setBytes(setLength) + UsualEntry::kTag.size();
  entries.append(ItemSet(items.data(), setLength),
                 CarmaSetDescriptor(loadInt32(from), loadInt32(from + 4), loadInt32(from + 8)));
  record.take(UsualEntry::bytes(setLength));
  return true;
}

void readEntry(BinaryReader& record, char descriptorType, int setLength, std::vector<int>& items,
               EntryList& entries) {
  int length = 0;
  if (!korassoc::detail::readItems(record, length, items)) {
    std::cout << "Failure reading ItemSet!\n";
    refuseEntry();
  }
  const auto stored = static_cast<int>(items.size());  // a negative length stands for none
  if (!isRightLength(stored, setLength)) refuseEntry();
  auto set = std::make_unique<ItemSet>(items.data(), stored);
  auto descriptor = korassoc::detail::readDescriptor(record, descriptorType);
  if (descriptor == nullptr) refuseEntry();
  entries.append(std::move(set), std::move(descriptor));
}

// The lines of the entry's object, 0 when it is not one.
std::uint64_t readEntryXML(std::ifstream& in, char descriptorType, int setLength, EntryList& entries) {
  if (!KorAssocXML::ParseStartObj(in, "ISCPair")) return 0;
  auto set = std::make_unique<ItemSet>();
  std::uint64_t lines = set->readObjectXML(in);
  if (lines == 0 || !isRightLength(set->length(), setLength)) return 0;
  auto descriptor = korassoc::detail::readDescriptorXML(in, descriptorType, lines);
  if (descriptor == nullptr || !KorAssocXML::ParseEndObj(in)) return 0;
  const SetCounter& counts = *descriptor;
  if (setLength != kAnyLength && typeid(counts) == typeid(CarmaSetDescriptor)) {
    entries.append(std::move(*set), static_cast<const CarmaSetDescriptor&>(counts));
  } else {
    entries.append(std::move(set), std::move(descriptor));
  }
  return lines + kFrameLines;
}

// Visits the entries in table order, their keys, items and descriptors fetched ahead: in a large table each
// of them is a miss in all caches.
template <typename Visitor>
void forEachFetched(const HashTable& table, Visitor&& visit) {
  std::array<const Entry*, 32> entries;
  std::size_t count = 0;
  const auto flush = [&] {
    for (std::size_t i = 0; i < count; ++i) prefetch(entries[i]->key->getTheArray());
    for (std::size_t i = 0; i < count; ++i) visit(*entries[i]);
    count = 0;
  };
  table.forEach([&](const Entry& entry) {
    prefetch(entry.key);
    prefetch(entry.descriptor);
    entries[count++] = &entry;
    if (count == entries.size()) flush();
  });
  flush();
}

template <typename Writer>
void writeAll(const HashTable& table, Writer& writer) {
  const SetCounter nothing;
  forEachFetched(table, [&](const Entry& entry) {
    writer.add(*entry.key, entry.descriptor != nullptr ? *entry.descriptor : nothing);
  });
}

std::uint64_t refusedTable(const char* line) {
  std::cout << line;
  return 0;
}

}  // namespace

std::uint64_t HashTable::writeObject(std::fstream& stream) const {
  korassoc::detail::TableRecordWriter record(stream, count_);
  writeAll(*this, record);
  return record.finish();
}

std::uint64_t HashTable::readObject(std::fstream& stream, char descriptorType) {
  return readLevel(stream, descriptorType, kAnyLength);
}

std::uint64_t HashTable::readLevel(std::fstream& stream, char descriptorType, int setLength, Packed* packed) {
  if (stream.bad()) {
    std::cerr << "bad stream in HashtablePair::readObject!\n";
    throw new IOException();
  }
  BinaryReader record(stream);
  std::string found;
  if (!record.tag("HT", &found)) {
    std::cout << "Failure reading Hashtable!\ninputStr: " << found << "\n";
    throw new IOException();
  }
  deleteContents();
  int entries = 0;
  if (!record.int32(entries) || entries < 1) return kHeadBytes;
  const std::uint64_t leastBytes = korassoc::detail::kItemSetHeadBytes +
                                   korassoc::detail::kLeastDescriptorBytes +
                                   4 * static_cast<std::uint64_t>(std::max(setLength, 0));
  EntryList list(*this, setLength, entries, packed);
  std::vector<int> items;
  for (int i = 0; i < entries; ++i) {
    record.expect(static_cast<std::uint64_t>(entries - i) * leastBytes);
    if (readUsualEntry(record, descriptorType, setLength, list)) continue;
    readEntry(record, descriptorType, setLength, items, list);
  }
  if (!list.isPacked()) takeOver(list.release(), entries);
  return record.count();
}

std::uint64_t HashTable::writeObjectXML(std::ostream& out, int tabs) const {
  korassoc::detail::TableObjectWriter object(out, count_, tabs);
  writeAll(*this, object);
  return object.finish();
}

std::uint64_t HashTable::readObjectXML(std::ifstream& in, char descriptorType) {
  return readLevelXML(in, descriptorType, kAnyLength);
}

std::uint64_t HashTable::readLevelXML(std::ifstream& in, char descriptorType, int setLength, Packed* packed) {
  int entries = 0;
  if (!KorAssocXML::ParseStartObj(in, "HashtablePair") || !KorAssocXML::ParseValue(in, entries)) {
    return refusedTable("Failure reading Hashtable!\n");
  }
  deleteContents();
  std::uint64_t lines = kFrameLines + 1;
  EntryList list(*this, setLength, entries, packed);
  for (int i = 0; i < entries; ++i) {
    const std::uint64_t linesOfEntry = readEntryXML(in, descriptorType, setLength, list);
    if (linesOfEntry == 0) return refusedTable("Problem reading Hashtable.\n");
    lines += linesOfEntry;
  }
  if (!KorAssocXML::ParseEndObj(in)) return refusedTable("Problem reading Hashtable.\n");
  if (entries > 0 && !list.isPacked()) takeOver(list.release(), entries);
  return lines;
}

// Fills the table, which is empty, with a chain of so many entries in their order, as put() would; takes the
// entries over with what they hold.
void HashTable::takeOver(Entry* first, int entries) {
  EntryList list(*this, first);
  resetBuckets(bucketsFor(entries));
  index_.makeRoomFor(static_cast<std::size_t>(entries));
  const Entry* ahead = list.front();
  for (int i = 0; i < kAhead && ahead != nullptr; ++i) ahead = ahead->next;
  while (Entry* entry = list.front()) {
    if (ahead != nullptr) {
      buckets_.prefetchLink(growth_.bucketOf(ahead->key->hashcode()));
      index_.prefetchHome(korassoc::detail::setCode(ahead->key->getTheArray(), ahead->key->length()));
      ahead = ahead->next;
    }
    if (find(entry->key) == nullptr) {
      const std::uint64_t code = korassoc::detail::setCode(entry->key->getTheArray(), entry->key->length());
      reserve(entry->key->hashcode(), count_);
      others_.makeRoom();
      hang(list.popFront(), code);
    } else {
      list.deleteFront();
    }
  }
}
