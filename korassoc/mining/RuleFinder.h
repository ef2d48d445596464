// Answers a question for rules.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "korassoc/mining/AntecedentFinder.h"
#include "korassoc/mining/FlatLattice.h"
#include "korassoc/mining/Labels.h"
#include "korassoc/mining/RuleOrder.h"
#include "korassoc/mining/RuleQuery.h"
#include "korassoc/mining/RuleTable.h"
#include "korassoc/mining/SideRoles.h"

namespace korassoc::detail {

// Goes through the itemsets within the bounds and through the antecedents of each. A rule is a record of 24
// bytes until all are found, sorted and cut:
//
//   keys of the two figures that decide the order | antecedent | whole itemset
//
// Nodes are in the order of itemsets. Of two rules with the same antecedent the one with the smaller whole
// has the smaller consequent, so records in order are rules in order.
class RuleFinder {
 public:
  // query: checked. minCount, maxCount: transactions with both sides. All is lent.
  RuleFinder(const FlatLattice& lattice, const RuleQuery& query, std::int64_t minCount,
             std::int64_t maxCount);

  // To be called once. Throws Error (kCancelled).
  RuleTable run(const Labels& labels);

 private:
  using Node = FlatLattice::Node;

  struct Record {
    RuleOrder::Keys keys;
    Node antecedent;
    Node whole;

    friend bool operator<(const Record& a, const Record& b) {
      if (a.keys.first != b.keys.first) return a.keys.first < b.keys.first;
      if (a.keys.second != b.keys.second) return a.keys.second < b.keys.second;
      return a.antecedent != b.antecedent ? a.antecedent < b.antecedent : a.whole < b.whole;
    }
  };
  // The antecedents of all itemsets, where they are compared with each other.
  struct Tables {
    std::vector<Antecedent> wholes;
    std::vector<Antecedent> antecedents;
    std::vector<std::size_t> begins = {0};  // by place among the wholes
  };

  template <typename Visit>
  void forEachWhole(Visit&& visit);

  void findLargestAbove();
  std::int64_t highestRedundantCount(const Antecedent& whole) const;
  void findAntecedents(const Antecedent& whole);
  Node startOf(const Antecedent& whole, std::size_t& length);
  bool mayBeTold(const Antecedent& whole, const Antecedent& antecedent) const;
  void emitUnlessTold(const Tables& tables);

  void emit(const Antecedent& whole, const std::vector<Antecedent>& antecedents);
  void keep(const Record& record);
  bool isFull() const { return !query_.orderBy && query_.top && records_.size() >= *query_.top; }
  RuleTable makeTable(const Labels& labels);

  const FlatLattice& lattice_;
  const RuleQuery& query_;
  std::int64_t minCount_, maxCount_;
  SideRoles roles_;
  bool nonRedundant_;
  std::optional<RuleOrder> order_;
  bool needsConsequent_;
  AntecedentFinder finder_;
  std::vector<std::int64_t> largestAbove_;  // by node: the count of the most frequent set that adds an item
  std::vector<Record> records_;             // with an order and a top, a heap whose first is the worst

  // Scratch.
  std::vector<Antecedent> antecedents_;
  std::vector<std::uint32_t> removable_, forced_;
  std::int64_t highestCount_ = 0;
};

}  // namespace korassoc::detail
