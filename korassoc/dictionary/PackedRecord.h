// One set of a packed level, where it stands.

#pragma once

#include <cstddef>
#include <limits>

#include "korassoc/dictionary/CarmaSetDescriptor.h"

namespace korassoc::detail {

// Cells of a PackedLevel, in their order: count, TID, max missed, items. Stays valid until the level prunes.
// Owns nothing.
class PackedRecord {
 public:
  static constexpr std::size_t kCells = 3;  // before the items

  PackedRecord() = default;  // of no set
  explicit PackedRecord(int* cells) : cells_(cells) {}

  bool isStored() const { return cells_ != nullptr; }
  // The rest is for stored sets.
  const int* items() const { return cells_ + kCells; }
  int count() const { return cells_[kCount]; }
  // The transaction at which the set was stored.
  int transaction() const { return cells_[kTransaction] & ~kExtendedBit; }
  // The most transactions that can hold the set, by what is known of it.
  long long upperBound() const { return static_cast<long long>(count()) + cells_[kMaxMissed]; }
  CarmaSetDescriptor descriptor() const {
    return CarmaSetDescriptor(count(), transaction(), cells_[kMaxMissed]);
  }

  void assign(const CarmaSetDescriptor& descriptor) {
    cells_[kCount] = descriptor.count;
    cells_[kTransaction] = descriptor.TID;
    cells_[kMaxMissed] = descriptor.maxMissed;
  }
  // Counts one more transaction; a count at the top of its range stays there.
  void increment() {
    if (cells_[kCount] < SetCounter::kMaxCount) ++cells_[kCount];
  }

  // Whether note was taken that a superset of this set is stored.
  bool isExtended() const { return (cells_[kTransaction] & kExtendedBit) != 0; }
  void noteExtended() { cells_[kTransaction] |= kExtendedBit; }

 private:
  enum Cell : std::size_t { kCount, kTransaction, kMaxMissed };
  static constexpr int kExtendedBit = std::numeric_limits<int>::min();  // transactions leave it free

  int* cells_ = nullptr;
};

}  // namespace korassoc::detail
