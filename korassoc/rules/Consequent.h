// What an itemset leaves to the consequent once the antecedent is taken out.

#pragma once

#include <vector>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// The consequents of one itemset after the other: setWhole(), then setAntecedent() for each antecedent. Rules
// are many and most need but the consequent's node, so its items are not copied. As in ItemSet(a, b), an item
// that the antecedent holds is no item of the consequent, however often the itemset repeats it.
class Consequent {
 public:
  explicit Consequent(const LatticeGraph& graph) : graph_(graph) {}

  void setWhole(int whole) {
    whole_ = whole;
    repeats_ = false;
    const ItemSet& set = graph_.set(whole);
    for (int i = 1; i < set.length(); ++i) repeats_ = repeats_ || set.getItemAt(i) == set.getItemAt(i - 1);
  }
  // antecedent is the node of a subset.
  void setAntecedent(int antecedent) {
    antecedent_ = antecedent;
    length_ = repeats_ ? set().length() : graph_.length(whole_) - graph_.length(antecedent);
  }

  int length() const { return length_; }
  // LatticeGraph::kNone when the consequent is not stored.
  int node() const { return repeats_ ? graph_.find(set()) : graph_.findDifference(whole_, antecedent_); }
  ItemSet set() const { return ItemSet(graph_.set(whole_), graph_.set(antecedent_)); }

 private:
  const LatticeGraph& graph_;
  int whole_ = LatticeGraph::kNone;
  bool repeats_ = false;  // the itemset holds an item twice
  int antecedent_ = LatticeGraph::kNone;
  int length_ = 0;
};

}  // namespace korassoc::detail
