// What the phase I step asks of the stored sets, in the two forms in which a dictionary keeps them.

#pragma once

#include <cstdint>
#include <limits>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// Both forms have:
//
//   Set                        a stored set, which lasts as long as the step
//   kNone                      no set
//   increment(length, code,    counts the set that candidate(), an ItemSetView, makes; kNone when it is not
//     candidate)               stored. candidate() is called only when a set with that code may be.
//   find(set)                  kNone when it is not stored
//   items, count,              of a stored set of the given length
//     transaction, maxMissed
//   isExtended                 false only when no superset can have been added by noteExtended()'s callers
//   prefetch(length, code)     starts to fetch what increment() looks at first
//
// Every length asked about is that of a set that phase I may store.

// The sets as entries of the dictionary's tables, on disk included.
class EntrySets {
 public:
  using Set = SetDictionary::Counted;
  static constexpr bool kMayLeave = true;  // sets may make room for others while the step runs

  explicit EntrySets(SetDictionary& dictionary) : dictionary_(dictionary) {}

  static bool isNone(const Set& set) { return set.descriptor == nullptr; }
  template <typename Candidate>
  Set increment(int length, std::uint64_t code, Candidate&& candidate) {
    return dictionary_.mayHold(length, code) ? dictionary_.increment(candidate()) : Set();
  }
  Set find(const ItemSetView& set) { return {nullptr, dictionary_.find(set)}; }
  const int* items(const Set& set, int /*length*/) const { return set.items; }
  int count(const Set& set, int /*length*/) const { return set.descriptor->count; }
  int transaction(const Set& set, int /*length*/) const { return set.descriptor->getTID(); }
  int maxMissed(const Set& set, int /*length*/) const { return set.descriptor->getMaxMissed(); }
  bool isExtended(const Set& /*set*/, int /*length*/) const { return true; }
  void noteExtended(const Set& /*set*/, int /*length*/) {}
  void prefetch(int length, std::uint64_t code) const { dictionary_.prefetch(length, code); }

 private:
  SetDictionary& dictionary_;
};

// The sets of a dictionary that isPacked().
class PackedSets {
 public:
  using Set = PackedLevel::Number;
  static constexpr bool kMayLeave = false;

  explicit PackedSets(SetDictionary& dictionary) : dictionary_(dictionary) {}

  static bool isNone(Set set) { return set == PackedLevel::kNone; }
  template <typename Candidate>
  Set increment(int length, std::uint64_t code, Candidate&& candidate) {
    PackedLevel* level = dictionary_.packedLevel(length);
    if (level == nullptr) return PackedLevel::kNone;
    const Set found = level->find(code, [&](const int* items) { return holds(items, candidate()); });
    if (found != PackedLevel::kNone) level->increment(found);
    return found;
  }
  Set find(const ItemSetView& set) {
    const PackedLevel* level = dictionary_.packedLevel(set.length);
    return level != nullptr ? level->find(set.code, [&set](const int* items) { return holds(items, set); })
                            : PackedLevel::kNone;
  }
  const int* items(Set set, int length) const { return level(length).items(set); }
  int count(Set set, int length) const { return level(length).countOf(set); }
  int transaction(Set set, int length) const { return level(length).transactionOf(set); }
  int maxMissed(Set set, int length) const { return level(length).maxMissedOf(set); }
  bool isExtended(Set set, int length) const { return level(length).isExtended(set); }
  void noteExtended(Set set, int length) { dictionary_.packedLevel(length)->noteExtended(set); }
  void prefetch(int length, std::uint64_t code) const {
    if (const PackedLevel* level = dictionary_.packedLevel(length)) level->prefetch(code);
  }

 private:
  static bool holds(const int* items, const ItemSetView& set) {
    for (int i = 0; i < set.length; ++i) {  // few of them: nothing to call for
      if (items[i] != set.items[i]) return false;
    }
    return true;
  }
  const PackedLevel& level(int length) const { return *dictionary_.packedLevel(length); }

  SetDictionary& dictionary_;
};

}  // namespace korassoc::detail
