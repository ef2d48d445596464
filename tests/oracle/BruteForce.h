// Itemsets and rules of a small data set by enumeration: no search, no bounds, no doubles in any decision.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

namespace oracle::brute {

using Set = std::vector<int>;  // ascending, no repeats
// Every set of items that occurs in some transaction, the empty set included, and the number of transactions
// that contain it.
using Counts = std::map<Set, int>;

// A fraction in whole numbers, so that comparing with it is exact.
struct Fraction {
  std::int64_t numerator;
  std::int64_t denominator;  // positive
  double value() const { return static_cast<double>(numerator) / static_cast<double>(denominator); }
};

struct Rule {
  Set antecedent;
  Set consequent;
  int countBoth;
  int countAntecedent;
  int countConsequent;
  int transactions;

  double support() const { return static_cast<double>(countBoth) / transactions; }
  double confidence() const { return static_cast<double>(countBoth) / countAntecedent; }
  // n * n_xy / (n_x * n_y)
  double lift() const {
    return static_cast<double>(countBoth) * transactions /
           (static_cast<double>(countAntecedent) * static_cast<double>(countConsequent));
  }
  bool reaches(Fraction minConfidence) const {
    return countBoth * minConfidence.denominator >= minConfidence.numerator * countAntecedent;
  }
};

// The subset of items whose positions are set in mask.
inline Set pick(const Set& items, std::uint32_t mask) {
  Set result;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if ((mask >> i & 1U) != 0) result.push_back(items[i]);
  }
  return result;
}

// Counts every subset of at most longest items of every transaction; repeats in a transaction do not count.
// Throws std::invalid_argument for a transaction of more than 20 distinct items.
inline Counts countSubsets(const std::vector<std::vector<int>>& transactions, int longest) {
  Counts counts;
  counts[{}] = 0;
  for (const std::vector<int>& transaction : transactions) {
    const std::set<int> distinct(transaction.begin(), transaction.end());
    const Set items(distinct.begin(), distinct.end());
    if (items.size() > 20) throw std::invalid_argument("too many items to enumerate their subsets");
    for (std::uint32_t mask = 0; mask < 1U << items.size(); ++mask) {
      const Set subset = pick(items, mask);
      if (static_cast<int>(subset.size()) <= longest) ++counts[subset];
    }
  }
  return counts;
}

// The sets counted at least minCount times.
inline Counts atLeast(const Counts& counts, int minCount) {
  Counts result;
  for (const auto& [set, count] : counts) {
    if (count >= minCount) result[set] = count;
  }
  return result;
}

// All rules X -> Y with non-empty Y and X + Y in counts that reach the confidence: every split of every set.
inline std::vector<Rule> rules(const Counts& counts, Fraction minConfidence) {
  std::vector<Rule> result;
  const int transactions = counts.at({});
  for (const auto& [set, count] : counts) {
    const std::uint32_t all = (1U << set.size()) - 1;
    for (std::uint32_t mask = 0; mask < all; ++mask) {
      const Set antecedent = pick(set, mask);
      const Set consequent = pick(set, all & ~mask);
      const Rule rule{antecedent,  consequent, count, counts.at(antecedent), counts.at(consequent),
                      transactions};
      if (rule.reaches(minConfidence)) result.push_back(rule);
    }
  }
  return result;
}

// Of these rules those that say what no other does: no rule of the same set has an antecedent that lacks one
// more item, and none has the same antecedent and one item more in the consequent.
inline std::vector<Rule> nonRedundant(const std::vector<Rule>& all) {
  std::set<std::pair<Set, Set>> present;  // antecedent, all items
  const auto whole = [](const Rule& rule) {
    Set items;
    std::merge(rule.antecedent.begin(), rule.antecedent.end(), rule.consequent.begin(), rule.consequent.end(),
               std::back_inserter(items));
    return items;
  };
  std::map<Set, std::set<Set>> largerByAntecedent;
  for (const Rule& rule : all) {
    present.insert({rule.antecedent, whole(rule)});
    largerByAntecedent[rule.antecedent].insert(whole(rule));
  }
  std::vector<Rule> result;
  for (const Rule& rule : all) {
    const Set items = whole(rule);
    bool redundant = false;
    for (std::size_t leftOut = 0; leftOut < rule.antecedent.size(); ++leftOut) {
      Set smaller = rule.antecedent;
      smaller.erase(smaller.begin() + static_cast<std::ptrdiff_t>(leftOut));
      redundant = redundant || present.count({smaller, items}) != 0;
    }
    for (const Set& larger : largerByAntecedent[rule.antecedent]) {
      redundant = redundant || (larger.size() == items.size() + 1 &&
                                std::includes(larger.begin(), larger.end(), items.begin(), items.end()));
    }
    if (!redundant) result.push_back(rule);
  }
  return result;
}

}  // namespace oracle::brute
