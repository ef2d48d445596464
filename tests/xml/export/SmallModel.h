// A model small enough to write its documents by hand, and the files that hold them.

#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/rules/AssociationRule.h"

using Items = std::vector<int>;

inline ItemSet itemSet(const Items& items) { return ItemSet(items.data(), static_cast<int>(items.size())); }

// Twelve transactions, in an order in which phase I comes to know every set of them.
inline std::vector<Items> smallModelTransactions() {
  return {{2, 8}, {5, 8}, {2, 5}, {2, 5}, {2, 5, 8}, {2, 5, 8}, {2}, {5}, {5}, {5}, {9}, {9}};
}

// The sets of those transactions, counted. The tables are small enough to have an order of their own:
//   one item, 6 buckets, hash 7 a:                        {2} 14 -> 2, {5} 35 -> 5, {8} 56 -> 2, {9} 63 -> 3;
//     a new set goes to the head of its chain:            {8} {2} {9} {5}
//   two items, 5 buckets, hash 7 a XOR 11 b:              {2 5} 57 -> 2, {2 8} 86 -> 1, {5 8} 123 -> 3:
//                                                         {2 8} {2 5} {5 8}
class SmallModel {
 public:
  SmallModel() : settings_(smallTables()), dictionary(4, &settings_, true) {
    dictionary.addEmptySet(new CarmaSetDescriptor(12, 0, 0));
    add({2}, 6);
    add({5}, 8);
    add({8}, 4);
    add({9}, 2);
    add({2, 5}, 4);
    add({2, 8}, 3);
    add({5, 8}, 3);
    add({2, 5, 8}, 2);
    dictionary.buildLattice();
  }

 private:
  static DictionarySettings smallTables() {
    DictionarySettings settings;
    settings.SetInitialBoundarySearchSize(6);
    settings.SetInitialHashtableSet23Size(5);
    return settings;
  }
  void add(const Items& items, int count) {
    dictionary.addSet(items.data(), static_cast<int>(items.size()), new CarmaSetDescriptor(count, 1, 0));
  }

  DictionarySettings settings_;

 public:
  SetDictionary dictionary;
};

inline AssociationRule ruleOf(const Items& antecedent, const Items& consequent, double support = 0.5,
                              double confidence = 0.5) {
  return AssociationRule(itemSet(antecedent), itemSet(consequent), support, confidence, 1.0);
}

// All rules of the small model with a confidence of at least a half, best first, from its counts.
inline std::vector<AssociationRule> smallModelRules() {
  const auto rule = [](const Items& antecedent, const Items& consequent, double both, double left) {
    return ruleOf(antecedent, consequent, both / 12.0, both / left);
  };
  return {rule({8}, {2}, 3, 4),    rule({8}, {5}, 3, 4),    rule({}, {5}, 8, 12),   rule({2}, {5}, 4, 6),
          rule({2, 8}, {5}, 2, 3), rule({5, 8}, {2}, 2, 3), rule({}, {2}, 6, 12),   rule({5}, {2}, 4, 8),
          rule({2}, {8}, 3, 6),    rule({8}, {2, 5}, 2, 4), rule({2, 5}, {8}, 2, 4)};
}

// A document of tests/xml/expected, written by hand.
inline std::string expectedDocument(const std::string& name) {
  std::ifstream in(std::filesystem::path(KORASSOC_SOURCE_DIR) / "tests/xml/expected" / name,
                   std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
