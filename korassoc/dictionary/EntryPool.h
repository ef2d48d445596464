// Where the sets live that a table makes entries for itself.

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
//   free_   the blocks given back since sortFree(), the last first; then those of freeBits_, from cursor_ on
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
    if (free_ == nullptr && !findFree()) addChunk();
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
    freeBits_[entry->number / kBits] |= bitOf(entry->number);
    entry->next = free_;
    free_ = entry;
  }
  // To be called when many blocks have been given back: lets the free ones be handed out in the order in
  // which they lie, which is the fastest to fill.
  void sortFree() {
    free_ = nullptr;
    cursor_ = 0;
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
    Block() : Entry{nullptr, nullptr, nullptr, 0, true} {}
    CarmaSetDescriptor counter;  // within the first cache line, where the block begins with one
    ItemSet set;
  };

  Block* takeBlock(ItemSet&& set) {
    makeRoom();
    Block* block = static_cast<Block*>(free_);
    if (block != nullptr) {
      free_ = block->next;
    } else {
      const int bit = std::countr_zero(freeBits_[cursor_]);
      block = static_cast<Block*>(
          at(static_cast<std::uint32_t>(cursor_ * kBits) + static_cast<std::uint32_t>(bit)));
    }
    freeBits_[block->number / kBits] &= ~bitOf(block->number);
    block->set = std::move(set);
    block->key = &block->set;
    block->next = nullptr;
    return block;
  }

  // Moves the cursor to the next word of free blocks. False when there is none: all others are in the chain.
  bool findFree() {
    while (cursor_ < freeBits_.size() && freeBits_[cursor_] == 0) ++cursor_;
    return cursor_ < freeBits_.size();
  }

  void addChunk() {
    const std::uint32_t size =
        chunks_.empty() ? kFirstChunk : std::min(2 * chunks_.back().size, kLargestChunk);
    freeBits_.resize((blocks_ + size + kBits - 1) / kBits);
    chunks_.push_back({std::make_unique<Block[]>(size), size});
    for (std::uint32_t i = 0; i < size; ++i) {
      const std::uint32_t number = blocks_ + i;
      chunks_.back().blocks[i].number = number;
      freeBits_[number / kBits] |= bitOf(number);
    }
    cursor_ = blocks_ / kBits;
    blocks_ += size;
  }

  static constexpr std::uint32_t kBits = 64;
  static std::uint64_t bitOf(std::uint32_t number) { return std::uint64_t{1} << (number % kBits); }

  static constexpr std::uint32_t kFirstChunk = 16;
  static constexpr std::uint32_t kLargestChunk = 4096;
  static constexpr std::uint32_t kGrowingChunks = 8;  // 16, 32, ... 2048

  struct Chunk {
    std::unique_ptr<Block[]> blocks;
    std::uint32_t size;
  };
  std::vector<Chunk> chunks_;
  std::uint32_t blocks_ = 0;  // in all chunks
  Entry* free_ = nullptr;
  std::vector<std::uint64_t> freeBits_;  // one for each block, set while it is free
  std::size_t cursor_ = 0;               // where in freeBits_ the search for a free block goes on
};

}  // namespace korassoc::detail
