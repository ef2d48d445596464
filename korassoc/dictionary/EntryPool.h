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
//   block   entry (key, descriptor, next, mark) | CarmaSetDescriptor | ItemSet with up to four items
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
    Block* block = takeBlock(std::move(set));
    block->counter = descriptor;
    block->descriptor = &block->counter;
    return block;
  }
  // The same with a descriptor that is not the pool's.
  Entry* take(ItemSet&& set, SetCounter* descriptor) {
    Block* block = takeBlock(std::move(set));
    block->descriptor = descriptor;
    return block;
  }
  // Takes back an entry of this pool.
  void give(Entry* entry) {
    static_cast<Block*>(entry)->set = ItemSet();  // items on the heap, if any
    entry->key = nullptr;
    entry->next = free_;
    free_ = entry;
  }
  // To be called when so many blocks have been given back one after the other. Lets the free blocks be handed
  // out in the order in which they lie, which is the fastest to fill, if that is not too far to go: it takes
  // a look at every block.
  void orderFreeBlocks(std::size_t given) {
    if (4 * given < blocks_) return;
    free_ = nullptr;
    for (auto chunk = chunks_.rbegin(); chunk != chunks_.rend(); ++chunk) {
      for (std::size_t i = chunk->size; i > 0; --i) {
        Block& block = chunk->blocks[i - 1];
        if (block.key != nullptr) continue;
        block.next = free_;
        free_ = &block;
      }
    }
  }

  // Whether key or descriptor are the entry's block's own. For entries of a pool only.
  static bool holdsKey(const Entry& entry) { return entry.key == &static_cast<const Block&>(entry).set; }
  static bool holdsDescriptor(const Entry& entry) {
    return entry.descriptor == &static_cast<const Block&>(entry).counter;
  }

 private:
  struct Block : Entry {
    Block() : Entry{nullptr, nullptr, nullptr, true} {}  // a free block has no key
    CarmaSetDescriptor counter;  // within the first cache line, where the block begins with one
    ItemSet set;
  };

  Block* takeBlock(ItemSet&& set) {
    if (free_ == nullptr) addChunk();
    Block* block = static_cast<Block*>(free_);
    free_ = block->next;
    block->set = std::move(set);
    block->key = &block->set;
    block->next = nullptr;
    return block;
  }

  void addChunk() {
    constexpr std::size_t kFirstChunk = 16;
    constexpr std::size_t kLargestChunk = 4096;
    const std::size_t size = chunks_.empty() ? kFirstChunk : std::min(2 * chunks_.back().size, kLargestChunk);
    chunks_.push_back({std::make_unique<Block[]>(size), size});
    blocks_ += size;
    for (std::size_t i = size; i > 0; --i) {
      Block& block = chunks_.back().blocks[i - 1];
      block.next = free_;
      free_ = &block;
    }
  }

  struct Chunk {
    std::unique_ptr<Block[]> blocks;
    std::size_t size;
  };
  std::vector<Chunk> chunks_;
  std::size_t blocks_ = 0;  // in all chunks
  Entry* free_ = nullptr;
};

}  // namespace korassoc::detail
