// Finds the antecedents of the rules that an itemset gives.

#pragma once

#include <vector>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/rules/CandidateQueue.h"

namespace korassoc::detail {

// Which antecedents of an itemset are looked for. Counts are transactions.
struct AntecedentFilter {
  int highestCount = 0;               // of an antecedent: the confidence is reached up to it
  double lowestCount = 0.0;           // of an antecedent: the largest confidence is kept from it on
  long long shortest = 0;             // sets of this length or less lose no further item
  long long longest = 0x7FFFFFFF;     // longer ones are no antecedents
  const ItemSet* keeps = nullptr;     // items that never leave; null: none
  const ItemSet* mayLeave = nullptr;  // the only items that may leave; null: all may
  bool minimalOnly = false;           // only those of which no subset that was looked at qualifies
};

// Goes down from a set to ever smaller subsets as long as the confidence is reached: a subset's count is
// never smaller than the set's, so what does not qualify has no qualifying subsets. The order in which
// antecedents are found is that of CandidateQueue. Cost: O(antecedents found times their length).
class AntecedentSearch {
 public:
  AntecedentSearch(SetDictionary& dictionary, const LatticeGraph& graph);

  // Appends the antecedents found below start, start included, to found. False when the dictionary was told
  // to stop; its flag is set then.
  bool run(int start, const AntecedentFilter& filter, std::vector<int>& found);

 private:
  SetDictionary& dictionary_;
  const LatticeGraph& graph_;
  CandidateQueue queue_;
  std::vector<int> visited_;  // by node: the search that visited it last
  int search_ = 0;
};

}  // namespace korassoc::detail
