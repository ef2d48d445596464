// The sets of one size that a full dictionary has moved to the disk.

#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/itemsets/ItemSet.h"

class SetDictionary;

namespace korassoc::detail {
class SpillFile;
class UsedSlots;
}  // namespace korassoc::detail

// SpillStore is a hash table in a file, open addressing with linear probing, for the itemsets of one length
// (the level) and their counts. All integers are 32 bits in the machine's byte order, nothing is padded:
//
//   offset 0   level + 1
//          4   0
//          8   slot 0 | slot 1 | ... | slot 737278          slotSize() = 4 level + 9 bytes each
//
//   slot       state (1 byte: 0 empty, 1 occupied, 2 deleted) | hash code | items, ascending | count
//
//   A set's search begins at slot (hash code, unsigned, modulo 737279) and goes on, past the last slot to the
//   first, until it meets the set or an empty slot. Deleted slots are passed over and never used again.
//   presence_ has a bit for each position at which a search may begin: a clear one proves that no set that
//   begins there was ever written, which spares the look at the file. used_ has one for each slot that holds
//   a set, so that emptying the store reads only where sets are.
//
// The file has its full length from the start (9.6 MB at level 1, taking room on the disk only where
// something was written) and is removed with the store.
//
// Failures: a file that cannot be opened, or not be laid out because the disk is full, leaves a store that
//   holds nothing and answers every request so. Later, nothing that was counted is lost without a word: a set
//   that cannot be written is refused and its slot reads as empty; a count that cannot be read or written, a
//   slot with an impossible state byte and a file that ends too early raise IOException, thrown as a pointer.
// Messages go to the standard output.
// Ownership: add() copies; the caller keeps its set and descriptor.
// Cost: one read for most searches, more and larger ones where slots collide; one or two writes. Emptying the
//   store reads the stretches that are in use, and writes a byte for each set. The bits take 184 kB of memory.
class KORASSOC_EXPORT SpillStore {
 public:
  static constexpr int kSlotCount = 737279;

  // What add() answers beside 0. The first, third and fourth may also stand in lastResult().
  enum Refusal {
    kNoFile = 1,      // the file could not be opened
    kOtherLevel = 2,  // the set has not level() items
    kFull = 4,        // no empty slot, or no room on the disk
    kUnreadable = 5,  // an impossible state byte, or the file ends too early
  };

  // Makes the file. A null or empty name stands for a new file of the current user's own in the temporary
  // directory that nobody else can reach. A name must be free, or lead to a regular file of the current
  // user's that is empty or that a store of this level has left behind and none has open: it is used then.
  // Anything else of that name is left as it is, and the store has no file. owner takes the sets back in
  // reduce() and must outlive the store; maxLevel is the owner's largest set size.
  SpillStore(SetDictionary* owner, const char* fileName, int maxLevel, int level);
  // The same on a file layer of the caller's; null stands for one that could not be opened.
  SpillStore(SetDictionary* owner, std::unique_ptr<korassoc::detail::SpillFile> file, int maxLevel,
             int level);
  SpillStore(const SpillStore&) = delete;
  SpillStore& operator=(const SpillStore&) = delete;
  ~SpillStore();  // closes and removes the file

  // Writes a set with the count of its descriptor (0 for a null one). 0 when it is on disk now, also when it
  // was already (with the count that it had: that is reported, not expected); otherwise a Refusal, and
  // nothing has changed on disk. May raise IOException.
  int add(ItemSet* set, SetCounter* descriptor);

  // Whether the set is on disk. Searches that end in a full circle count as found. May raise IOException.
  bool contains(const ItemSet* set);

  // A new counter with the set's count and TID 0, which the caller owns, or null: not on disk, or not
  // readable, which is reported.
  SetCounter* find(const ItemSet* set);

  // Adds one to the set's count. Returns a counter with the new count, valid until the next increment(), or
  // null when the set is not on disk. A count at the top of its range stays there. May raise IOException, the
  // count on disk then being the old one wherever the file still allows.
  SetCounter* increment(const ItemSet* set);

  // Empties the store: deletes the sets with a count below minCount and hands the others to the owner's
  // memory. Returns how many were deleted; 0 at once for a level other than the store's. Raises
  // DictionaryFailure when the owner's memory is full, and IOException for a file that does not give back
  // every set written; what had not been dealt with is then still on disk, and a later call goes on with it.
  int reduce(int level, double minCount);

  // Sets on disk.
  int size() const { return setCount_; }

  bool isOpen() const { return file_ != nullptr; }
  int level() const { return level_; }
  int maxLevel() const { return maxLevel_; }
  int slotCount() const { return kSlotCount; }
  int slotSize() const { return static_cast<int>(slotSize_); }  // bytes
  // The file's path, given or made up; empty when no file could be made up. A file without a given name may
  // not be found there.
  const std::string& fileName() const { return fileName_; }
  // How many sets add() was asked to write, less those that reduce() dealt with, and the running mean of
  // their counts. Removal is taken out of the mean by a formula of its own (see noteRemoved).
  int writtenCount() const { return writtenCount_; }
  double meanCount() const { return meanCount_; }
  // Where the last search ended: a slot's offset in the file (8 and more) or a Refusal; and whether that slot
  // holds the set.
  std::int64_t lastResult() const { return lastResult_; }
  bool lastFound() const { return lastFound_; }

 private:
  static std::uint32_t startPosition(const ItemSet& set) {
    return static_cast<std::uint32_t>(set.hashcode()) % static_cast<std::uint32_t>(kSlotCount);
  }
  std::int64_t offsetOf(std::uint32_t position) const;
  bool layOut();
  bool mayHold(const ItemSet* set) const;

  // Searches; the answer is in lastResult_ and lastFound_ and, when there is a slot to it, in foundSlot_ and
  // foundPosition_.
  void search(const ItemSet& set);
  bool isSetOf(const char* slot, const ItemSet& set) const;
  bool writeSlot(std::uint64_t offset, const ItemSet& set, int count);
  bool writeState(std::uint32_t position, char state);
  void takeBack(std::uint32_t position, const char* slot);
  std::size_t usedStretch(std::uint32_t position) const;

  // Slots are read in blocks. beginWalk() forgets what was read and says how many slots to read first;
  // slotAt() gives the bytes of a slot, null when the file does not, valid until the next call.
  void beginWalk(std::size_t firstBlock);
  const char* slotAt(std::uint32_t position);
  int itemIn(const char* slot, int index) const;
  int countIn(const char* slot) const;
  std::unique_ptr<ItemSet> setIn(const char* slot) const;

  void noteWritten(int count);
  void noteRemoved(int count);

  SetDictionary* dictionary_;
  int maxLevel_;
  int level_;
  std::size_t slotSize_;
  std::unique_ptr<korassoc::detail::SpillFile> file_;  // null: the store holds nothing
  int withoutFile_ = kNoFile;                          // what add() answers then
  std::string fileName_;
  std::unique_ptr<std::bitset<kSlotCount>> presence_;  // null without file
  std::unique_ptr<korassoc::detail::UsedSlots> used_;  // null without file
  int setCount_ = 0;
  int writtenCount_ = 0;
  double meanCount_ = 0.0;
  std::int64_t lastResult_ = kNoFile;
  bool lastFound_ = false;
  const char* foundSlot_ = nullptr;  // in block_
  std::uint32_t foundPosition_ = 0;
  SetCounter sharedCounter_{1, 0};  // what increment() returns

  std::vector<char> block_;    // the slots [blockStart_, blockStart_ + blockSlots_) as last read
  std::size_t mostBlock_ = 0;  // the most slots read at once
  std::size_t nextBlock_ = 0;  // slots to read the next time
  std::uint32_t blockStart_ = 0;
  std::size_t blockSlots_ = 0;
};
