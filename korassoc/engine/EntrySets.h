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
  class Set {
   public:
    Set() = default;
    Set(const int* itemsOf, SetCounter* descriptorOf) : items_(itemsOf), descriptor_(descriptorOf) {}

    bool isStored() const { return descriptor_ != nullptr; }
    SetCounter* descriptor() const { return descriptor_; }
    const int* items() const { return items_; }  // null: of find()
    int count() const { return descriptor_->count; }
    int transaction() const { return descriptor_->getTID(); }
    long long upperBound() const { return static_cast<long long>(count()) + descriptor_->getMaxMissed(); }
    static bool isExtended() { return true; }
    void noteExtended() {}

   private:
    const int* items_ = nullptr;
    SetCounter* descriptor_ = nullptr;
  };
  static constexpr bool kMayLeave = true;

  explicit EntrySets(SetDictionary& dictionary) : dictionary_(dictionary) {}

  // item: an element of something that lasts as long as the step.
  Set meet(const int& item, std::uint64_t code) {
    return setOf(dictionary_.increment(ItemSetView(&item, 1, code)));
  }
  Set meet(const Set& parent, int length, const CodedItem& item, std::uint64_t code,
           std::vector<int>& candidate) {
    if (!dictionary_.mayHold(length + 1, code)) return {};
    candidate.assign(parent.items(), parent.items() + length);
    candidate.push_back(item.item);
    return setOf(dictionary_.increment(ItemSetView(candidate.data(), length + 1, code)));
  }
  Set find(const ItemSetView& set) { return {nullptr, dictionary_.find(set)}; }
  void prefetch(int length, std::uint64_t code) const { dictionary_.prefetch(length, code); }

 private:
  static Set setOf(const SetDictionary::Counted& counted) { return {counted.items, counted.descriptor}; }

  SetDictionary& dictionary_;
};

}  // namespace korassoc::detail
