// The rules of one query before they are handed to the host.

#pragma once

#include <cstddef>
#include <vector>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/rules/AssociationRule.h"

namespace korassoc::detail {

// Antecedents of itemsets, in order of emission: those of set i are antecedents[begins[i]] up to begins[i +
// 1].
struct AntecedentTables {
  std::vector<int> sets;  // nodes
  std::vector<int> antecedents;
  std::vector<std::size_t> begins{0};

  void close(int set) {
    sets.push_back(set);
    begins.push_back(antecedents.size());
  }
  // Drops every antecedent that one of the sets one item larger has as well: the same antecedent then reaches
  // a larger consequent. Only what is among the sets counts as a larger one.
  void pruneRedundant(const LatticeGraph& graph);
};

// A rule between nodes of the lattice.
struct RuleFigures {
  int whole;       // node of antecedent and consequent together
  int antecedent;  // node
  int consequent;  // node, or LatticeGraph::kNone when the consequent is not stored
  double support;
  double confidence;
  double lift;
};

// Collects rules as numbers and makes the sets at the end, in the order asked for: numbers are sorted and cut
// many times faster than rules are.
class RuleList {
 public:
  explicit RuleList(const LatticeGraph& graph) : graph_(graph) {}

  void reserve(std::size_t rules) { rules_.reserve(rules); }
  void add(const RuleFigures& rule) { rules_.push_back(rule); }
  // Appends the rules to out and brings all of out into the order of sortBy ('C', 'S', 'L'; anything else: as
  // they stand), then cuts it to maxRules (negative: no cut).
  void moveTo(std::vector<AssociationRule>& out, char sortBy, int maxRules);

 private:
  void sort(char sortBy);
  template <double RuleFigures::*First, double RuleFigures::*Second>
  void sortBy();
  bool setsBefore(const RuleFigures& a, const RuleFigures& b) const;
  ItemSet consequentOf(const RuleFigures& rule) const;

  const LatticeGraph& graph_;
  std::vector<RuleFigures> rules_;
};

}  // namespace korassoc::detail
