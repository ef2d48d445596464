// A run that one process begins and another one ends: what both of them know.

#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/support/Dice.h"
#include "tests/support/VectorTransactions.h"

namespace interrupted_run {

inline constexpr int kPruningFrequency = 10;
inline constexpr int kTransactions = 65;

// Two groups of items that come together, and others that become frequent late or not at all.
inline Transactions transactions() {
  Dice dice(21);
  Transactions all;
  for (int i = 0; i < kTransactions; ++i) {
    std::vector<int> items;
    const auto often = [&](int item, int percent) {
      if (dice.chance(percent)) items.push_back(item);
    };
    const bool group = dice.chance(50);
    for (const int item : {1, 2, 3}) often(item, group ? 90 : 20);
    for (const int item : {4, 5}) often(item, i < 15 ? 5 : 85);
    often(6, 40);
    items.push_back(7 + dice.below(20));
    all.push_back(items);
  }
  return all;
}

inline double support(int transaction) { return transaction < 30 ? 0.15 : 0.1; }

// A call of phase I that ends between two prunings ends with one of its own. Pruning goes by the counts so
// far, whatever the bounds are, and so may give up a set that an uncut run keeps; of these transactions' sets
// it never does so with one as frequent as this.
inline constexpr double kFrequent = 0.36;

// The rules of an engine that has seen all transactions, a line each, in an order of their own: that of the
// engine follows its tables, and a table that was restored has another number of buckets.
inline std::string finalRules(CarmaAssociationAlgorithm& engine, double minSupport) {
  if (!engine.RunPhaseII().IsOK()) return "phase II failed";
  std::vector<AssociationRule> rules;
  if (!engine.CreateNgetRules(minSupport, 0.5, rules).IsOK()) return "no rules could be created";
  std::vector<std::string> lines;
  for (const AssociationRule& rule : rules) {
    std::string line;
    const auto append = [&](const ItemSet& set) {
      for (int i = 0; i < set.length(); ++i) line += std::to_string(set.getItemAt(i)) + ' ';
    };
    append(rule.getAntecedent());
    line += "=> ";
    append(rule.getConsequent());
    char numbers[96];
    std::snprintf(numbers, sizeof numbers, "%.17g %.17g %.17g\n", rule.getSupport(), rule.getConfidence(),
                  rule.getLift());
    lines.push_back(line + numbers);
  }
  std::sort(lines.begin(), lines.end());
  std::string all;
  for (const std::string& line : lines) all += line;
  return all;
}

}  // namespace interrupted_run
