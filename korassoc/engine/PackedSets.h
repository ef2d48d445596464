// The stored sets as the phase I step sees them where they are packed.

#pragma once

#include <cstdint>
#include <vector>

#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/itemsets/ItemCode.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// The sets of a dictionary that isPacked(). What it has, PhaseIStep.h says.
class PackedSets {
 public:
  using Set = PackedRecord;
  static constexpr bool kMayLeave = false;

  explicit PackedSets(SetDictionary& dictionary) : dictionary_(dictionary) {}

  Set meet(const int& item, std::uint64_t code) {
    return meetIn(1, code, [item](const int* items) { return items[0] == item; });
  }
  Set meet(const Set& parent, int length, const CodedItem& item, std::uint64_t code,
           std::vector<int>& /*candidate*/) {
    return meetIn(length + 1, code, [&parent, length, &item](const int* items) {
      return items[length] == item.item && sameItems(items, parent.items(), length);
    });
  }
  Set find(const ItemSetView& set) {
    PackedLevel* level = dictionary_.packedLevel(set.length);
    return level != nullptr ? level->find(set) : Set();
  }
  void prefetch(int length, std::uint64_t code) const {
    if (const PackedLevel* level = dictionary_.packedLevel(length)) level->prefetch(code);
  }

 private:
  template <typename Matches>
  Set meetIn(int length, std::uint64_t code, Matches&& matches) {
    PackedLevel* level = dictionary_.packedLevel(length);
    Set found = level != nullptr ? level->find(code, matches) : Set();
    if (found.isStored()) found.increment();
    return found;
  }

  SetDictionary& dictionary_;
};

}  // namespace korassoc::detail
