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
  using Set = PackedLevel::Number;
  struct Met {
    Set set = PackedLevel::kNone;
    int count = 0;
    int transaction = 0;
    long long upperBound = 0;
    bool isExtended = false;

    bool isStored() const { return set != PackedLevel::kNone; }
  };
  static constexpr bool kMayLeave = false;

  explicit PackedSets(SetDictionary& dictionary) : dictionary_(dictionary) {}

  Met meet(const int& item, std::uint64_t code) {
    return meetIn(1, code, [item](const int* items) { return items[0] == item; });
  }
  Met meet(Set parent, int length, const CodedItem& item, std::uint64_t code,
           std::vector<int>& /*candidate*/) {
    const int* const parentItems = items(parent, length);
    return meetIn(length + 1, code, [parentItems, length, &item](const int* items) {
      return items[length] == item.item && same(items, parentItems, length);
    });
  }
  Met find(const ItemSetView& set) {
    const PackedLevel* level = dictionary_.packedLevel(set.length);
    if (level == nullptr) return {};
    const Set found =
        level->find(set.code, [&set](const int* items) { return same(items, set.items, set.length); });
    return found != PackedLevel::kNone ? metOf(*level, found) : Met();
  }
  const int* items(Set set, int length) const { return dictionary_.packedLevel(length)->items(set); }
  long long upperBound(Set set, int length) const {
    return upperBound(*dictionary_.packedLevel(length), set);
  }
  void noteExtended(Set set, int length) { dictionary_.packedLevel(length)->noteExtended(set); }
  void prefetch(int length, std::uint64_t code) const {
    if (const PackedLevel* level = dictionary_.packedLevel(length)) level->prefetch(code);
  }

 private:
  static bool same(const int* a, const int* b, int length) {
    for (int i = 0; i < length; ++i) {  // few of them: nothing to call for
      if (a[i] != b[i]) return false;
    }
    return true;
  }
  static long long upperBound(const PackedLevel& level, Set set) {
    return static_cast<long long>(level.countOf(set)) + level.maxMissedOf(set);
  }
  static Met metOf(const PackedLevel& level, Set set) {
    return {set, level.countOf(set), level.transactionOf(set), upperBound(level, set), level.isExtended(set)};
  }
  template <typename Matches>
  Met meetIn(int length, std::uint64_t code, Matches&& matches) {
    PackedLevel* level = dictionary_.packedLevel(length);
    if (level == nullptr) return {};
    const Set found = level->find(code, matches);
    if (found == PackedLevel::kNone) return {};
    level->increment(found);
    return metOf(*level, found);
  }

  SetDictionary& dictionary_;
};

}  // namespace korassoc::detail
