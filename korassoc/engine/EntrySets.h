// The stored sets as the phase I step sees them where they are entries of tables.

#pragma once

#include <cstdint>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/itemsets/ItemCode.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// The sets as entries of the dictionary's tables, on disk included. What it has, PhaseIStep.h says.
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
  static constexpr bool kMayLeave = true;

  explicit EntrySets(SetDictionary& dictionary) : dictionary_(dictionary) {}

  // item: an element of something that lasts as long as the step.
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

}  // namespace korassoc::detail
