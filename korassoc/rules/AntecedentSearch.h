// Finds the antecedents of the rules that an itemset gives.

#pragma once

#include <cstddef>
#include <vector>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/rules/CandidateQueue.h"

namespace korassoc::detail {

// Which antecedents of an itemset are looked for. Counts are transactions.
struct AntecedentFilter {
  int highestCount = 0;               // of an antecedent: the confidence is reached up to it
  double lowestCount = 0.0;           // of an antecedent: those below are passed through but not reported
  long long shortest = 0;             // sets of this length or less lose no further item
  long long longest = 0x7FFFFFFF;     // longer ones are no antecedents
  const ItemSet* keeps = nullptr;     // items that never leave; null: none
  const ItemSet* mayLeave = nullptr;  // the only items that may leave; null: all may
  bool minimalOnly = false;           // only those of which no subset that was looked at qualifies
};

// Goes down from a set to ever smaller subsets as long as the confidence is reached: a subset's count is
// never smaller than the set's, so what does not qualify has no qualifying subsets.
// Cost: O(antecedents met times their length).
class AntecedentSearch {
 public:
  // The order in which antecedents are met does not change which ones are, but shows in unsorted results.
  enum class Order {
    kMostFrequentFirst,  // that of CandidateQueue
    kAny                 // whichever is fastest
  };

  AntecedentSearch(SetDictionary& dictionary, const LatticeGraph& graph, Order order);

  // Appends the antecedents found below start, start included, to found. False when the dictionary was told
  // to stop; its flag is set then.
  bool run(int start, const AntecedentFilter& filter, std::vector<int>& found);

  // False, with the flag set, when the dictionary was told to stop.
  bool mayGoOn();

 private:
  bool mayLeave(int node, std::size_t position, const AntecedentFilter& filter) const;
  void push(int node, int count);
  int pop();
  bool isDone() const { return order_ == Order::kAny ? stack_.empty() : queue_.empty(); }

  SetDictionary& dictionary_;
  const LatticeGraph& graph_;
  Order order_;
  CandidateQueue queue_;           // of kMostFrequentFirst
  std::vector<int> stack_;         // of kAny
  LatticeGraph::LentMarks marks_;  // a round for each run
};

}  // namespace korassoc::detail
