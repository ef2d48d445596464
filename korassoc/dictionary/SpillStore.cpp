#include "korassoc/dictionary/SpillStore.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <utility>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillFile.h"
#include "korassoc/dictionary/UsedSlots.h"
#include "korassoc/engine/Exceptions.h"

using korassoc::detail::SpillFile;

namespace {

constexpr char kEmpty = 0;
constexpr char kOccupied = 1;
constexpr char kDeleted = 2;

// Within the file, and within a slot.
constexpr std::size_t kSlots = SpillStore::kSlotCount;
constexpr std::int64_t kFirstSlot = 8;
constexpr std::size_t kHashAt = 1;
constexpr std::size_t kItemsAt = 5;

// Slots are read in blocks of at most this many bytes (but at least one slot).
constexpr std::size_t kBlockBytes = 8192;

// A file that another process has left is looked through in pieces of this many bytes.
constexpr std::size_t kReadAtOnce = 262144;

std::uint64_t fileSizeOf(std::size_t slotSize) {
  return std::uint64_t{kFirstSlot} + std::uint64_t{kSlots} * slotSize;
}

std::size_t slotSizeOf(int level) { return 4 * static_cast<std::size_t>(std::max(level, 0)) + 9; }

bool isStateByte(char byte) { return byte == kEmpty || byte == kOccupied || byte == kDeleted; }

int intAt(const char* bytes) {
  int value = 0;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// Whether a store of this level, in a process that was ended, can have left the file behind: only the size
// and the state bytes are sure to be right then.
bool isLeftover(SpillFile& file, int level) {
  const std::size_t slotSize = slotSizeOf(level);
  if (file.size() != fileSizeOf(slotSize)) return false;
  const std::size_t slots = std::max<std::size_t>(1, kReadAtOnce / slotSize);
  std::vector<char> bytes(slots * slotSize);
  for (std::size_t slot = 0; slot < kSlots; slot += slots) {
    const std::size_t size = std::min(slots, kSlots - slot) * slotSize;
    if (file.read(kFirstSlot + slot * slotSize, bytes.data(), size) != size) return false;
    for (std::size_t at = 0; at < size; at += slotSize) {
      if (!isStateByte(bytes[at])) return false;
    }
  }
  return true;
}

// Opens the store's file; null for a level that no set has.
std::unique_ptr<SpillFile> openFor(int level, const char* fileName) {
  if (level < 0) return nullptr;
  return korassoc::detail::openSpillFile(fileName,
                                         [level](SpillFile& file) { return isLeftover(file, level); });
}

void putInt(char* bytes, int value) { std::memcpy(bytes, &value, sizeof value); }

[[noreturn]] void refuseState(char state) {
  std::cout << "Default Never Correct " << static_cast<int>(static_cast<unsigned char>(state));
  throw new IOException;
}

}  // namespace

SpillStore::SpillStore(SetDictionary* owner, const char* fileName, int maxLevel, int level)
    : SpillStore(owner, openFor(level, fileName), maxLevel, level) {
  if (fileName_.empty() && fileName != nullptr) fileName_ = fileName;
}

SpillStore::SpillStore(SetDictionary* owner, std::unique_ptr<SpillFile> file, int maxLevel, int level)
    : dictionary_(owner),
      maxLevel_(maxLevel),
      level_(level),
      slotSize_(slotSizeOf(level)),
      file_(std::move(file)) {
  if (file_ == nullptr) return;
  fileName_ = file_->name();
  if (!layOut()) {
    file_.reset();
    withoutFile_ = kFull;
    return;
  }
  presence_ = std::make_unique<std::bitset<kSlotCount>>();
  used_ = std::make_unique<korassoc::detail::UsedSlots>(kSlotCount);
  mostBlock_ = std::max<std::size_t>(1, kBlockBytes / slotSize_);
  block_.resize(mostBlock_ * slotSize_);
}

SpillStore::~SpillStore() = default;

// Gives the file its final length and writes the header. The slots are left to the file system, which makes
// them read as zeros: empty. In this order a file that is left behind has a size by which it is known.
bool SpillStore::layOut() {
  char header[kFirstSlot] = {};
  putInt(header, level_ + 1);
  return file_->resize(fileSizeOf(slotSize_)) && file_->write(0, header, sizeof header);
}

std::int64_t SpillStore::offsetOf(std::uint32_t position) const {
  return static_cast<std::int64_t>(position) * static_cast<std::int64_t>(slotSize_) + kFirstSlot;
}

bool SpillStore::mayHold(const ItemSet* set) const {
  return file_ != nullptr && set->length() == level_ && presence_->test(startPosition(*set));
}

int SpillStore::add(ItemSet* set, SetCounter* descriptor) {
  if (file_ == nullptr) return withoutFile_;
  if (set->length() != level_) return kOtherLevel;
  const int count = descriptor != nullptr ? descriptor->count : 0;
  noteWritten(count);
  search(*set);
  if (lastFound_) {
    std::cout << "STRANGE ADD on disk";
    setIn(foundSlot_)->displayAll();
    std::cout << "STRANGE ADD adding";
    set->displayAll();
    return 0;
  }
  if (lastResult_ >= kFirstSlot) {
    if (writeSlot(static_cast<std::uint64_t>(lastResult_), *set, count)) {
      presence_->set(startPosition(*set));
      used_->add(foundPosition_);
      ++setCount_;
      return 0;
    }
    lastResult_ = kFull;
  }
  std::cout << "Bad OFFSET " << lastResult_ << std::endl;
  set->displayAll();
  return static_cast<int>(lastResult_);
}

bool SpillStore::contains(const ItemSet* set) {
  if (!mayHold(set)) return false;
  search(*set);
  return lastFound_ || lastResult_ < kFirstSlot;
}

SetCounter* SpillStore::find(const ItemSet* set) {
  if (file_ == nullptr || set->length() != level_) return nullptr;
  try {
    search(*set);
  } catch (IOException* failure) {
    delete failure;
    return nullptr;
  }
  if (lastFound_) return new SetCounter(countIn(foundSlot_), 0);
  if (lastResult_ < kFirstSlot) {
    std::cout << "Failure to Seek ";
    set->display();
  }
  return nullptr;
}

SetCounter* SpillStore::increment(const ItemSet* set) {
  if (!mayHold(set)) return nullptr;
  search(*set);
  if (lastResult_ < kFirstSlot) {
    std::cout << "Seek Failed to find place" << std::endl;
    return nullptr;
  }
  if (!lastFound_) return nullptr;
  sharedCounter_.count = countIn(foundSlot_);
  if (sharedCounter_.count < SetCounter::kMaxCount) {
    char before[4];
    char after[4];
    putInt(before, sharedCounter_.count);
    putInt(after, ++sharedCounter_.count);
    const std::uint64_t offset = static_cast<std::uint64_t>(lastResult_) + slotSize_ - sizeof after;
    if (!file_->write(offset, after, sizeof after)) {
      file_->write(offset, before, sizeof before);  // a part of the new count may stand there
      throw new IOException;
    }
    if (writtenCount_ > 0) meanCount_ += 1.0 / writtenCount_;
  }
  return &sharedCounter_;
}

int SpillStore::reduce(int level, double minCount) {
  if (level != level_ || file_ == nullptr) return 0;
  int deleted = 0;
  std::uint32_t blockEnd = 0;
  for (std::uint32_t position = used_->next(0); position < static_cast<std::uint32_t>(kSlotCount);
       position = used_->next(position + 1)) {
    if (position >= blockEnd) {
      const std::size_t stretch = usedStretch(position);
      beginWalk(stretch);
      blockEnd = position + static_cast<std::uint32_t>(stretch);
    }
    const char* slot = slotAt(position);
    if (slot == nullptr) throw new IOException;
    if (*slot == kEmpty || *slot == kDeleted) continue;
    if (*slot != kOccupied) refuseState(*slot);
    const int count = countIn(slot);
    if (count < minCount) {
      if (!writeState(position, kDeleted)) throw new IOException;
      ++deleted;
    } else {
      takeBack(position, slot);
    }
    used_->remove(position);
    --setCount_;
    noteRemoved(count);
  }
  if (setCount_ > 0) throw new IOException;  // somebody else has written to the file: sets are missing
  return deleted;
}

// How many slots, with the given one, make up one block that ends with a slot in use.
std::size_t SpillStore::usedStretch(std::uint32_t position) const {
  const std::uint32_t limit = position + static_cast<std::uint32_t>(mostBlock_);
  std::uint32_t last = position;
  for (std::uint32_t slot = position; slot < std::min(limit, static_cast<std::uint32_t>(kSlotCount));
       slot = used_->next(slot + 1)) {
    last = slot;
  }
  return last - position + 1;
}

// Hands the set of a slot to the dictionary. The slot goes first, so that the set is never in both places,
// and comes back when the dictionary fails.
void SpillStore::takeBack(std::uint32_t position, const char* slot) {
  if (dictionary_ == nullptr || dictionary_->inStoreCount() >= dictionary_->maxInStoreSets()) {
    throw new DictionaryFailure;
  }
  auto set = setIn(slot);
  auto descriptor = std::make_unique<SetCounter>(countIn(slot), 0);
  if (!writeState(position, kDeleted)) throw new IOException;
  try {
    if (!dictionary_->takeBack(set, descriptor)) throw new DictionaryFailure;
  } catch (...) {
    writeState(position, kOccupied);
    throw;
  }
}

void SpillStore::search(const ItemSet& set) {
  lastFound_ = false;
  const std::uint32_t start = startPosition(set);
  if (offsetOf(start) < 1) {
    std::cout << "BAD OFFSET " << offsetOf(start) << ", slotPosition " << start;
    set.displayAll();
    throw new IOException;
  }
  beginWalk(1);
  std::uint32_t position = start;
  do {
    const char* slot = slotAt(position);
    if (slot == nullptr) {
      lastResult_ = kUnreadable;
      std::cout << "Failure to Seek ";
      set.display();
      throw new IOException;
    }
    if (!isStateByte(*slot)) {
      lastResult_ = kUnreadable;
      refuseState(*slot);
    }
    lastFound_ = *slot == kOccupied && isSetOf(slot, set);
    if (lastFound_ || *slot == kEmpty) {
      lastResult_ = offsetOf(position);
      foundSlot_ = slot;
      foundPosition_ = position;
      return;
    }
    position = position + 1 < static_cast<std::uint32_t>(kSlotCount) ? position + 1 : 0;
  } while (position != start);
  lastResult_ = kFull;
  std::cout << "Looped " << std::endl << "Not Found In Primary" << std::endl;
}

bool SpillStore::isSetOf(const char* slot, const ItemSet& set) const {
  if (intAt(slot + kHashAt) != set.hashcode()) return false;
  for (int i = 0; i < level_; ++i) {
    if (itemIn(slot, i) != set.getItemAt(i)) return false;
  }
  return true;
}

// The state byte is written last: until then the slot reads as empty, and after a failure it does so again.
bool SpillStore::writeSlot(std::uint64_t offset, const ItemSet& set, int count) {
  std::vector<char> slot(slotSize_, kEmpty);
  putInt(slot.data() + kHashAt, set.hashcode());
  for (int i = 0; i < level_; ++i)
    putInt(slot.data() + kItemsAt + 4 * static_cast<std::size_t>(i), set.getItemAt(i));
  putInt(slot.data() + slotSize_ - 4, count);
  if (file_->write(offset + kHashAt, slot.data() + kHashAt, slotSize_ - kHashAt) &&
      file_->write(offset, &kOccupied, 1)) {
    return true;
  }
  std::fill(slot.begin(), slot.end(), kEmpty);
  file_->write(offset, slot.data(), slotSize_);
  return false;
}

bool SpillStore::writeState(std::uint32_t position, char state) {
  return file_->write(static_cast<std::uint64_t>(offsetOf(position)), &state, 1);
}

void SpillStore::beginWalk(std::size_t firstBlock) {
  blockSlots_ = 0;
  nextBlock_ = firstBlock;
}

const char* SpillStore::slotAt(std::uint32_t position) {
  if (position < blockStart_ || position >= blockStart_ + blockSlots_) {
    const std::size_t left = static_cast<std::size_t>(kSlotCount) - position;
    const std::size_t bytes = std::min(nextBlock_, left) * slotSize_;
    blockStart_ = position;
    blockSlots_ =
        file_->read(static_cast<std::uint64_t>(offsetOf(position)), block_.data(), bytes) / slotSize_;
    if (blockSlots_ == 0) return nullptr;
    nextBlock_ = std::min(nextBlock_ * 8, mostBlock_);
  }
  return block_.data() + (position - blockStart_) * slotSize_;
}

int SpillStore::itemIn(const char* slot, int index) const {
  return intAt(slot + kItemsAt + 4 * static_cast<std::size_t>(index));
}

int SpillStore::countIn(const char* slot) const { return intAt(slot + slotSize_ - 4); }

std::unique_ptr<ItemSet> SpillStore::setIn(const char* slot) const {
  std::vector<int> items(static_cast<std::size_t>(level_));
  for (int i = 0; i < level_; ++i) items[static_cast<std::size_t>(i)] = itemIn(slot, i);
  return std::make_unique<ItemSet>(items.data(), level_);
}

void SpillStore::noteWritten(int count) {
  meanCount_ = (writtenCount_ * meanCount_ + count) / (writtenCount_ + 1.0);
  ++writtenCount_;
}

// The weight of the old mean is the new number of sets, not the old one: the mean drifts away from the true
// one. That is how the store has always reckoned, and who reads the figure reckons with it.
void SpillStore::noteRemoved(int count) {
  if (writtenCount_ > 1) {
    --writtenCount_;
    meanCount_ = (writtenCount_ * meanCount_ - count) / writtenCount_;
  } else {
    writtenCount_ = 0;
    meanCount_ = 0.0;
  }
}
