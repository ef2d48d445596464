// Texts and the numbers they got.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "korassoc/mining/Item.h"

namespace korassoc::detail {

// LabelTable gives each distinct label a number: 0, 1, 2, ... in order of arrival.
//
//   slots_     [ -- | {hash, 1} | -- | {hash, 0} | ... ]   open addressing, a power of two, at most half full
//   offsets_   [ 0, 5, 9, ... ]                            label i is bytes_[offsets_[i] .. offsets_[i+1])
//   bytes_     "breadmilk..."                              the labels one after another
//
// Offsets and bytes have the layout of an Arrow column of large strings.
// Cost: intern() and find() walk one run of slots, expected O(1) beside hashing; a new label takes the free
// slot that ended its walk. Memory: 8 bytes a slot, 8 bytes and its text a label.
class LabelTable {
 public:
  LabelTable();

  // The label's number, a new one when it is new. Throws Error (kLimit) beyond 2,147,483,647 labels.
  Item intern(std::string_view label);
  std::optional<Item> find(std::string_view label) const;

  std::size_t size() const { return offsets_.size() - 1; }
  // Requires 0 <= number < size(). Valid until the next intern().
  std::string_view label(Item number) const;

  // Orders the labels by their bytes and numbers them anew. Returns the new number of each old one.
  std::vector<Item> sort();

  std::span<const std::int64_t> offsets() const { return offsets_; }
  std::string_view bytes() const { return bytes_; }

 private:
  static constexpr Item kFree = -1;
  struct Slot {
    std::uint32_t hash = 0;
    Item number = kFree;
  };

  // The slot that holds the label, or the free one where it belongs.
  std::size_t slotOf(std::string_view label, std::uint32_t hash) const;
  void rebuild(std::size_t slotCount);

  std::vector<Slot> slots_;
  std::vector<std::int64_t> offsets_ = {0};
  std::string bytes_;
};

}  // namespace korassoc::detail
