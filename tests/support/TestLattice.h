// A built lattice of given sets and counts, without an engine.

#pragma once

#include <utility>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/itemsets/ItemSet.h"
#include "tests/oracle/BruteForce.h"

inline ItemSet itemSet(const std::vector<int>& items) {
  return ItemSet(items.data(), static_cast<int>(items.size()));
}

inline std::vector<int> itemVector(const ItemSet& set) {
  return {set.getTheArray(), set.getTheArray() + set.length()};
}

// Stores the sets in the order of their keys; the empty set is among them, its count the number of
// transactions.
class TestLattice {
 public:
  explicit TestLattice(const oracle::brute::Counts& counts, int maxLevel = 10)
      : dictionary(maxLevel, &settings, true) {
    for (const auto& [items, count] : counts) add(items, count);
    dictionary.buildLattice();
  }

  void add(const std::vector<int>& items, int count) {
    auto* descriptor = new CarmaSetDescriptor(count, 1, 0);
    if (items.empty()) {
      dictionary.addEmptySet(descriptor);
    } else {
      dictionary.addSet(items.data(), static_cast<int>(items.size()), descriptor);
    }
  }

  DictionarySettings settings;
  SetDictionary dictionary;
};
