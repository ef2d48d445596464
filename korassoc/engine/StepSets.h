// What the phase I step asks of the stored sets, in the two forms in which a dictionary keeps them.

#pragma once

#include <cstdint>
#include <vector>

#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/itemsets/ItemCode.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// Both forms have:
//
//   Set                     a stored set; it lasts as long as the step
//   Met                     a set that was looked for, and counted if it is stored, with its values then
//   meet(item)              counts the set of one item
//   meet(parent, length,    counts the parent, of so many items, with an item added that is larger than all
//     item)                 of them
//   find(set)               the set without counting it
//   items, upperBound       of a stored set of the given length: its items; the most transactions that can
//   hold
//                           it, by what is known of it
//   noteExtended(set)       takes note that a superset is stored; isExtended is false where nobody did
//   prefetch                starts to fetch what meet() looks at first
//
// Item and code: an item with its code, a set's code (ItemCode). No set is longer than phase I may store.

struct CodedItem {
  explicit CodedItem(int itemOf) : item(itemOf), code(itemCode(itemOf)) {}
  int item;
  std::uint64_t code;
};

// The sets as entries of the dictionary's tables, on disk included.
class EntrySets {
 public:
  struct Set {
    const int* items = nullptr;
    SetCounter* descriptor = nullptr;
  };
  struct Met {
    Set set;
    int count = 0;
    int transaction = 0;
    long long upperBound = 0;
    bool isExtended = true;

    bool isStored() const { return set.descriptor != nullptr; }
  };
  static constexpr bool kMayLeave = true;  // sets may make room for others while the step runs

  explicit EntrySets(SetDictionary& dictionary) : dictionary_(dictionary) {}

  // item: where it lasts as long as the step.
  Met meet(const int& item, std::uint64_t code) {
    return metOf(dictionary_.increment(ItemSetView(&item, 1, code)));
  }
  Met meet(const Set& parent, int length, const CodedItem& item, std::uint64_t code,
           std::vector<int>& candidate) {
    if (!dictionary_.mayHold(length + 1, code)) return {};
    candidate.assign(parent.items, parent.items + length);
    candidate.push_back(item.item);
    return metOf(dictionary_.increment(ItemSetView(candidate.data(), length + 1, code)));
  }
  Met find(const ItemSetView& set) { return metOf({nullptr, dictionary_.find(set)}); }
  const int* items(const Set& set, int /*length*/) const { return set.items; }
  long long upperBound(const Set& set, int /*length*/) const {
    return static_cast<long long>(set.descriptor->count) + set.descriptor->getMaxMissed();
  }
  void noteExtended(const Set& /*set*/, int /*length*/) {}
  void prefetch(int length, std::uint64_t code) const { dictionary_.prefetch(length, code); }

 private:
  Met metOf(const SetDictionary::Counted& counted) const {
    if (counted.descriptor == nullptr) return {};
    const Set set{counted.items, counted.descriptor};
    return {set, counted.descriptor->count, counted.descriptor->getTID(), upperBound(set, 0)};
  }

  SetDictionary& dictionary_;
};

// The sets of a dictionary that isPacked().
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
