// Where an itemset keeps its items.

#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

#include "korassoc/itemsets/IntStorage.h"

namespace korassoc::detail {

// Room for the items of one set: up to four stand in the object itself, more on the heap. Most stored sets
// have no more than four items, and a dictionary makes and drops millions of them. Ownership: the storage
// owns its room on the heap. It is a bare pointer, since it points to either place.
class ItemStorage {
 public:
  static constexpr int kInline = 4;

  ItemStorage() = default;
  // Room for n items, not initialised. A negative n throws std::bad_array_new_length.
  explicit ItemStorage(int n) : data_(n > 0 && n <= kInline ? inline_ : newInts(n).release()) {}
  // What from holds; from is left without room.
  ItemStorage(ItemStorage&& from) noexcept { take(from); }
  ItemStorage& operator=(ItemStorage&& from) noexcept {
    if (this == &from) return *this;
    release();
    take(from);
    return *this;
  }
  ~ItemStorage() { release(); }

  int* get() { return data_; }  // null: no room
  const int* get() const { return data_; }
  int& operator[](std::size_t i) { return data_[i]; }
  int operator[](std::size_t i) const { return data_[i]; }

 private:
  void take(ItemStorage& from) noexcept {
    const bool isInline = from.data_ == from.inline_;
    if (isInline) std::copy_n(from.inline_, kInline, inline_);
    data_ = isInline ? inline_ : from.data_;
    from.data_ = nullptr;
  }
  void release() noexcept {
    if (data_ != inline_) delete[] data_;
  }

  int* data_ = nullptr;  // inline_, an array of its own on the heap, or null
  int inline_[kInline] = {};
};

}  // namespace korassoc::detail
