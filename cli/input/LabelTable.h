// Item labels and the numbers they got.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korassoc::cli {

// LabelTable gives each distinct label a number: 0, 1, 2, ... in order of arrival.
//
//   slots_   [ -- | {hash, 1} | -- | {hash, 0} | ... ]   open addressing, a power of two, at most half full
//   ends_    [ 5, 9, ... ]                               label i is bytes_[ends_[i-1] .. ends_[i])
//   bytes_   "breadmilk..."                              the labels one after another
//
// Cost: intern() and find() walk one run of slots, expected O(1) beside hashing; a new label takes the free
// slot that ended its walk. Memory: 8 bytes a slot, 8 bytes and its text a label.
class LabelTable {
 public:
  LabelTable();

  // The label's number, a new one when it is new. At most 2147483647 labels; more throw std::length_error.
  int intern(std::string_view label);
  std::optional<int> find(std::string_view label) const;

  std::size_t size() const { return ends_.size(); }

  // Requires 0 <= number < size(). Valid until the next intern().
  std::string_view label(int number) const;

  // Orders the labels by their bytes and numbers them anew. Returns the new number of each old one.
  std::vector<int> sort();

 private:
  static constexpr int kFree = -1;
  struct Slot {
    std::uint32_t hash = 0;
    int number = kFree;
  };

  std::vector<Slot> slots_;
  std::vector<std::size_t> ends_;
  std::string bytes_;

  // The slot that holds the label, or the free one where it belongs.
  std::size_t slotOf(std::string_view label, std::uint32_t hash) const;
  void rebuild(std::size_t slotCount);
};

}  // namespace korassoc::cli
