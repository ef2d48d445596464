// Where an itemset keeps its items.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#include "korassoc/itemsets/IntStorage.h"

namespace korassoc::detail {

// The items of one set, in 20 bytes: up to four stand in the object itself, more on the heap.
//
//   words_    [ item | item | item | item ]    or    [ address on the heap | unused ]
//   state_    [ length, 30 bits | place, 2 bits ]
//
// Most stored sets have no more than four items, and a dictionary makes and drops millions of them.
// Ownership: the storage owns its room on the heap.
class ItemStorage {
 public:
  static constexpr int kInline = 4;
  static constexpr int kMostItems = (1 << 30) - 1;

  ItemStorage() = default;
  // n items, not initialised. n below 0 or above kMostItems throws std::bad_array_new_length.
  explicit ItemStorage(int n) {
    if (n < 0 || n > kMostItems) throw std::bad_array_new_length();
    if (n > kInline) {
      int* const items = newInts(n).release();
      std::memcpy(words_, &items, sizeof items);
    }
    state_ = static_cast<std::uint32_t>(n) << kPlaceBits | (n == 0 ? kNowhere : n <= kInline ? kHere : kHeap);
  }
  // What from holds; from is left without room.
  ItemStorage(ItemStorage&& from) noexcept { take(from); }
  ItemStorage& operator=(ItemStorage&& from) noexcept {
    if (this == &from) return *this;
    release();
    take(from);
    return *this;
  }
  ~ItemStorage() { release(); }

  int length() const { return static_cast<int>(state_ >> kPlaceBits); }
  // n: at least 0 and at most the length that the storage was made with, whose room it keeps.
  void shorten(int n) { state_ = static_cast<std::uint32_t>(n) << kPlaceBits | place(); }

  int* get() { return place() == kHere ? words_ : place() == kHeap ? onHeap() : nullptr; }  // null: no room
  const int* get() const { return place() == kHere ? words_ : place() == kHeap ? onHeap() : nullptr; }
  int& operator[](std::size_t i) { return get()[i]; }
  int operator[](std::size_t i) const { return get()[i]; }

 private:
  static constexpr std::uint32_t kPlaceBits = 2;
  static constexpr std::uint32_t kNowhere = 0;
  static constexpr std::uint32_t kHere = 1;
  static constexpr std::uint32_t kHeap = 2;
  static_assert(sizeof(int*) <= kInline * sizeof(int));

  std::uint32_t place() const { return state_ & ((1U << kPlaceBits) - 1); }
  int* onHeap() const {
    int* items = nullptr;
    std::memcpy(&items, words_, sizeof items);
    return items;
  }
  void take(ItemStorage& from) noexcept {
    std::copy_n(from.words_, kInline, words_);
    state_ = from.state_;
    from.state_ = 0;
  }
  void release() noexcept {
    if (place() == kHeap) delete[] onHeap();
  }

  int words_[kInline] = {};
  std::uint32_t state_ = 0;
};

}  // namespace korassoc::detail
