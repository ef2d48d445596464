// Where the sets that the first pass adds live.

#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// EntryPool hands out entries of a table that carry their set and counter with them, in one block each:
//
//   block   entry (key, descriptor, next, number) | CarmaSetDescriptor | ItemSet with up to four items
//
// Sets come and go by the million while transactions are read; blocks that are given back are used again, and
// the blocks themselves lie together in chunks of 16, 32, ... 4096, 4096, ... blocks. Their numbers, which
// take half the room of a pointer, go on from chunk to chunk. Ownership: owns the blocks until it is
// destroyed, whatever became of their entries. Memory: 96 bytes a block with 64-bit pointers.
template <typename Entry>
class EntryPool {
 public:
  EntryPool() = default;
  EntryPool(const EntryPool&) = delete;
  EntryPool& operator=(const EntryPool&) = delete;

  // Makes room for one entry more; take() does not fail then.
  void makeRoom() {
    if (free_ == nullptr) addChunk();
  }
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
    ++given_;
  }
  // To be called when many blocks have been given back. Lets the free blocks be handed out in the order in
  // which they lie, which is the fastest to fill, if enough have been given since it was last done: it takes
  // a look at every block.
  void orderFreeBlocks() {
    if (4 * given_ < blocks_) return;
    given_ = 0;
    free_ = nullptr;
    for (auto chunk = chunks_.rbegin(); chunk != chunks_.rend(); ++chunk) {
      for (std::uint32_t i = chunk->size; i > 0; --i) {
        Block& block = chunk->blocks[i - 1];
        if (block.key != nullptr) continue;
        block.next = free_;
        free_ = &block;
      }
    }
  }

  // The entry of the block of this number.
  Entry* at(std::uint32_t number) const {
    const std::uint32_t place = number + kFirstChunk;
    if (place >= kLargestChunk) {
      return &chunks_[kGrowingChunks + place / kLargestChunk - 1].blocks[place % kLargestChunk];
    }
    const std::uint32_t size = std::bit_floor(place);
    return &chunks_[static_cast<std::size_t>(std::bit_width(size / kFirstChunk)) - 1].blocks[place - size];
  }

  // Whether key or descriptor are the entry's block's own. For entries of a pool only.
  static bool holdsKey(const Entry& entry) { return entry.key == &static_cast<const Block&>(entry).set; }
  static bool holdsDescriptor(const Entry& entry) {
    return entry.descriptor == &static_cast<const Block&>(entry).counter;
  }

 private:
  struct Block : Entry {
    Block() : Entry{nullptr, nullptr, nullptr, 0, true} {}  // a free block has no key
    CarmaSetDescriptor counter;  // within the first cache line, where the block begins with one
    ItemSet set;
  };

  Block* takeBlock(ItemSet&& set) {
    makeRoom();
    Block* block = static_cast<Block*>(free_);
    free_ = block->next;
    block->set = std::move(set);
    block->key = &block->set;
    block->next = nullptr;
    return block;
  }

  void addChunk() {
    const std::uint32_t size =
        chunks_.empty() ? kFirstChunk : std::min(2 * chunks_.back().size, kLargestChunk);
    chunks_.push_back({std::make_unique<Block[]>(size), size});
    for (std::uint32_t i = size; i > 0; --i) {
      Block& block = chunks_.back().blocks[i - 1];
      block.number = blocks_ + i - 1;
      block.next = free_;
      free_ = &block;
    }
    blocks_ += size;
  }

  static constexpr std::uint32_t kFirstChunk = 16;
  static constexpr std::uint32_t kLargestChunk = 4096;
  static constexpr std::uint32_t kGrowingChunks = 8;  // 16, 32, ... 2048

  struct Chunk {
    std::unique_ptr<Block[]> blocks;
    std::uint32_t size;
  };
  std::vector<Chunk> chunks_;
  std::uint32_t blocks_ = 0;  // in all chunks
  std::size_t given_ = 0;     // back, since they were last put in order
  Entry* free_ = nullptr;
};

}  // namespace korassoc::detail
