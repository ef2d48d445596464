// The dictionary's records, binary and XML.

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/dictionary/DescriptorRecord.h"
#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/dictionary/TableObjectWriter.h"
#include "korassoc/dictionary/TableRecordWriter.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;
using KorAssocXML::ParseValue;
using KorAssocXML::XMLObj;

// What a record holds besides the tables.
struct SetDictionary::RecordHead {
  bool latticeBuilt = false;  // in XML alone
  int maxLevel = 0;
  int spillLevel = 0;
  int inStoreCount = 0;
  int maxInStoreSets = 0;
  int leaveInMainStoreCount = 0;
  int fixedSetCount = 0;
  bool diskSpill = false;
  bool bitsetOff = false;
};

namespace {

constexpr std::string_view kTag = "SD";
constexpr int kXmlTabs = 1;
constexpr std::uint64_t kValueLines = 9;

[[noreturn]] void refuseRecord(const std::string& found) {
  std::cout << "Failure reading SetDictionary!\ninputStr: " << found << "\n";
  throw new IOException();
}

[[noreturn]] void refuseObject() {
  std::cout << "Failure reading SetDictionary!\n";
  throw new IOException();
}

[[noreturn]] void refuseStream(const char* line) {
  std::cerr << line;
  throw new IOException();
}

// Any number but 1 is no.
bool parseFlag(std::ifstream& in, bool& flag) {
  int value = 0;
  if (!ParseValue(in, value)) return false;
  flag = value == 1;
  return true;
}

}  // namespace

SetDictionary::RecordHead SetDictionary::recordHead() const {
  RecordHead head;
  head.latticeBuilt = latticeBuilt_;
  head.maxLevel = maxLevel_;
  head.spillLevel = recordedSpillLevel_;
  head.inStoreCount = inStoreCount_;
  head.maxInStoreSets = maxInStoreSets_;
  head.leaveInMainStoreCount = leaveInMainStoreCount_;
  head.fixedSetCount = fixedSetCount_;
  head.diskSpill = diskSpill_;
  head.bitsetOff = bitsetOff_;
  return head;
}

// Whether a dictionary made from the settings of the same state can have written it. A negative number of
// fixed sets is good only as the settings gave it.
bool SetDictionary::accepts(const RecordHead& head) const {
  return head.maxLevel == maxLevel_ && head.spillLevel >= 0 && head.inStoreCount >= 0 &&
         (head.fixedSetCount >= 0 ? head.fixedSetCount - 1 <= maxLevel_
                                  : head.fixedSetCount == fixedSetCount_);
}

// Takes the values over and gives up all that was stored: the tables are going to be read.
void SetDictionary::restart(const RecordHead& head) {
  while (!smallQueue_.empty()) smallQueue_.pop();  // their blocks are used again, without links
  smallQueue_ = korassoc::detail::SmallQueue();
  queueTopCount_ = 0;
  refusedCopies_.clear();
  graph_.reset();
  spillStore_.reset();
  levels_.clear();
  packed_.reset();
  setOpen();
  itemBits_->reset();
  latticeBuilt_ = head.latticeBuilt;
  brokenOff_ = false;
  recordedSpillLevel_ = head.spillLevel;
  inStoreCount_ = head.inStoreCount;
  maxInStoreSets_ = head.maxInStoreSets;
  leaveInMainStoreCount_ = head.leaveInMainStoreCount;
  fixedSetCount_ = head.fixedSetCount;
  diskSpill_ = head.diskSpill;
  bitsetOff_ = head.bitsetOff;
}

// Reads one table after the other by read(table, level, packed); those that stay empty are not kept.
template <typename Read>
void SetDictionary::readTables(Read&& read) {
  if (mayBePacked()) packed_ = std::make_unique<PackedLevels>();
  std::unique_ptr<HashTable> table;
  for (int level = 0;; ++level) {
    if (table == nullptr) {  // what a table reads before it is packed must leave no blocks in the pool
      table = isPacked() ? std::make_unique<HashTable>(1) : std::make_unique<HashTable>(1, pool_);
    }
    HashTable::Packed packed;
    read(*table, level, isLevelPacked(level) ? &packed : nullptr);
    if (packed != nullptr && isLevelPacked(level)) {
      keepPacked(level, std::move(packed));
    } else if (packed != nullptr) {  // the stream has had the sets looked at, and so unpacked
      table = std::make_unique<HashTable>(1, pool_);
      packed->fill(*table);
      keepTable(level, std::move(table));
    } else if (table->count() > 0) {
      keepTable(level, std::move(table));
    }
    if (level == maxLevel_) break;
  }
  graph_.reset();  // the stream may have had one made of a part
  if (!bitsetOff_) setLevelBits(recordedSpillLevel_ - 1);
}

// What the level's table would write, tabs in front of each line of an object.
template <typename Writer, typename Stream, typename... Tabs>
std::uint64_t SetDictionary::writePacked(int level, Stream& stream, Tabs... tabs) const {
  const korassoc::detail::PackedLevel* const sets = packedLevel(level);  // the stream may have them unpacked
  Writer writer(stream, countInMemory(level), tabs...);
  if (sets != nullptr) {
    sets->forEach(
        [&writer](const ItemSet& set, const CarmaSetDescriptor& descriptor) { writer.add(set, descriptor); });
  }
  return writer.finish();
}

std::uint64_t SetDictionary::writeObject(std::fstream& stream) const {
  if (stream.bad()) refuseStream("Bad stream for saving SetDictionary!\n");
  const Hold hold(*this);
  BinaryWriter record(stream);
  const RecordHead head = recordHead();
  record.tag(kTag);
  for (const int value : {head.maxLevel, head.spillLevel, head.inStoreCount, head.maxInStoreSets,
                          head.leaveInMainStoreCount, head.fixedSetCount}) {
    record.int32(value);
  }
  record.flag(head.diskSpill);
  record.flag(head.bitsetOff);
  std::uint64_t bytes = record.finish();
  for (int level = 0; stream.good(); ++level) {
    bytes += isLevelPacked(level) ? writePacked<korassoc::detail::TableRecordWriter>(level, stream)
                                  : levelTable(level).writeObject(stream);
    if (level == maxLevel_) break;
  }
  stream.flush();
  return bytes;
}

std::uint64_t SetDictionary::readObject(std::fstream& stream) {
  if (isHeld()) return 0;
  const Hold hold(*this);
  if (stream.bad()) refuseStream("Bad stream for reading SetDictionary!\n");
  BinaryReader record(stream);
  RecordHead head;
  std::string found;
  char diskSpill = '0';
  char bitsetOff = '0';
  if (!record.tag(kTag, &found) ||
      !record.int32s({&head.maxLevel, &head.spillLevel, &head.inStoreCount, &head.maxInStoreSets,
                      &head.leaveInMainStoreCount, &head.fixedSetCount}) ||
      !record.character(diskSpill) || !record.character(bitsetOff) || !accepts(head)) {
    refuseRecord(found);
  }
  head.diskSpill = diskSpill == '1';
  head.bitsetOff = bitsetOff == '1';
  restart(head);
  std::uint64_t bytes = record.count();
  const char type = bitsetOff_ ? korassoc::detail::kCarmaDescriptors : korassoc::detail::kPlainCounters;
  readTables([&](HashTable& table, int level, HashTable::Packed* packed) {
    bytes += table.readLevel(stream, type, level, packed);
  });
  return bytes;
}

std::uint64_t SetDictionary::writeObjectXML(std::ostream& out) const {
  const Hold hold(*this);
  const RecordHead head = recordHead();
  const XMLObj object("SetDictionary", kXmlTabs);
  object.StartObj(out);
  object.WriteSubElement(out, head.latticeBuilt);
  for (const int value : {head.maxLevel, head.spillLevel, head.inStoreCount, head.maxInStoreSets,
                          head.leaveInMainStoreCount, head.fixedSetCount}) {
    object.WriteSubElement(out, value);
  }
  object.WriteSubElement(out, head.diskSpill);
  object.WriteSubElement(out, head.bitsetOff);
  std::uint64_t lines = kValueLines + korassoc::detail::kFrameLines;
  for (int level = 0; out.good(); ++level) {
    lines += isLevelPacked(level) ? writePacked<korassoc::detail::TableObjectWriter>(level, out, kXmlTabs + 1)
                                  : levelTable(level).writeObjectXML(out, kXmlTabs + 1);
    if (level == maxLevel_) break;
  }
  object.EndObj(out);
  return lines;
}

std::uint64_t SetDictionary::readObjectXML(std::ifstream& in) {
  if (isHeld()) return 0;
  const Hold hold(*this);
  if (in.bad()) refuseStream("Bad stream for reading SetDictionary!\n");
  RecordHead head;
  if (!KorAssocXML::ParseStartObj(in, "SetDictionary") || !parseFlag(in, head.latticeBuilt)) refuseObject();
  for (int* value : {&head.maxLevel, &head.spillLevel, &head.inStoreCount, &head.maxInStoreSets,
                     &head.leaveInMainStoreCount, &head.fixedSetCount}) {
    if (!ParseValue(in, *value)) refuseObject();
  }
  if (!parseFlag(in, head.diskSpill) || !parseFlag(in, head.bitsetOff) || !accepts(head)) refuseObject();
  restart(head);
  std::uint64_t lines = kValueLines + korassoc::detail::kFrameLines;
  const char counting = bitsetOff_ ? korassoc::detail::kCarmaDescriptors : korassoc::detail::kPlainCounters;
  const char type = latticeBuilt_ ? korassoc::detail::kLatticeDescriptors : counting;
  readTables([&](HashTable& table, int level, HashTable::Packed* packed) {
    const std::uint64_t linesOfTable = table.readLevelXML(in, type, level, packed);
    if (linesOfTable == 0) refuseObject();
    lines += linesOfTable;
  });
  if (!KorAssocXML::ParseEndObj(in)) refuseObject();
  return lines;
}
