// The sets as phase I keeps them while nobody asks for a set or its descriptor.

#include <algorithm>
#include <utility>

#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"

using korassoc::detail::PackedLevel;

// Sets that may have to make room for others stand in a queue, and so are objects.
bool SetDictionary::mayBePacked() const {
  return leaveInMainStoreCount_ < 1 && !diskSpill_ && bitsetOff_ && !latticeBuilt_ && smallQueue_.empty();
}

// Leaves everything as it was when memory runs out.
void SetDictionary::unpackAll() const {
  std::vector<std::unique_ptr<HashTable>> tables(std::max(packed_->size(), levels_.size()));
  for (std::size_t level = 1; level < packed_->size(); ++level) {
    const PackedLevel* sets = (*packed_)[level].get();
    if (sets == nullptr) continue;
    tables[level] = std::make_unique<HashTable>(1, pool_);
    sets->fill(*tables[level]);
  }
  if (!levels_.empty()) tables[0] = std::move(levels_[0]);
  levels_ = std::move(tables);
  if (isHeld()) {
    walkedPacked_ = std::move(packed_);
  } else {
    packed_.reset();
  }
}

// Makes these the sets of a level.
void SetDictionary::keepPacked(int level, std::unique_ptr<PackedLevel> sets) {
  const auto index = static_cast<std::size_t>(level);
  if (index >= packed_->size()) packed_->resize(index + 1);
  (*packed_)[index] = std::move(sets);
}

// Keeps a table that was read and could not be packed: the levels before it are unpacked, too.
void SetDictionary::keepTable(int level, std::unique_ptr<HashTable> table) {
  const auto index = static_cast<std::size_t>(level);
  if (isLevelPacked(level)) unpackAll();
  levels_.resize(index + 1);
  levels_[index] = std::move(table);
}
