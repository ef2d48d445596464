// Where the sets that the first pass adds live.

#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// EntryPool hands out entries of a table that carry their set and counter with them, in one block each:
//
//   block   entry (key, descriptor, next, mark) | ItemSet with up to four items | CarmaSetDescriptor
//
// Sets come and go by the million while transactions are read; blocks that are given back are used again, and
// the blocks themselves lie together in chunks. Ownership: owns the blocks until it is destroyed, whatever
// became of their entries.
template <typename Entry>
class EntryPool {
 public:
  EntryPool() = default;
  EntryPool(const EntryPool&) = delete;
  EntryPool& operator=(const EntryPool&) = delete;

  // An entry whose key and descriptor are its block's own, with these values.
  Entry* take(ItemSet&& set, const CarmaSetDescriptor& descriptor) {
    if (free_ == nullptr) addChunk();
    Block* block = static_cast<Block*>(free_);
    free_ = block->next;
    block->set = std::move(set);
    block->counter = descriptor;
    block->key = &block->set;
    block->descriptor = &block->counter;
    block->next = nullptr;
    return block;
  }
  // Takes back an entry of this pool.
  void give(Entry* entry) {
    static_cast<Block*>(entry)->set = ItemSet();  // items on the heap, if any
    entry->next = free_;
    free_ = entry;
  }

  // Whether key or descriptor are the entry's block's own. For entries of a pool only.
  static bool holdsKey(const Entry& entry) { return entry.key == &static_cast<const Block&>(entry).set; }
  static bool holdsDescriptor(const Entry& entry) {
    return entry.descriptor == &static_cast<const Block&>(entry).counter;
  }

 private:
  struct Block : Entry {
    Block() : Entry{nullptr, nullptr, nullptr, true} {}
    ItemSet set;
    CarmaSetDescriptor counter;
  };

  void addChunk() {
    constexpr std::size_t kFirstChunk = 16;
    constexpr std::size_t kLargestChunk = 4096;
    chunkSize_ = std::clamp(2 * chunkSize_, kFirstChunk, kLargestChunk);
    chunks_.push_back(std::make_unique<Block[]>(chunkSize_));
    for (std::size_t i = chunkSize_; i > 0; --i) {
      Block& block = chunks_.back()[i - 1];
      block.next = free_;
      free_ = &block;
    }
  }

  std::vector<std::unique_ptr<Block[]>> chunks_;
  std::size_t chunkSize_ = 0;  // blocks of the last chunk
  Entry* free_ = nullptr;
};

}  // namespace korassoc::detail
