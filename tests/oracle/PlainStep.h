// The plain engine's work for one transaction of the first pass.

#pragma once

#include <vector>

#include "tests/oracle/PlainDictionary.h"

namespace oracle {

// Counts the stored sets that a transaction contains and adds the candidates one item longer. The fields are
// the running figures; they are public to be compared.
class PlainStep {
 public:
  PlainStep(int maxLengthSet, PlainDictionary& dictionary);

  // transaction as the host gives it, in any order. sigmaPrev and sigma are the average support before and
  // after this transaction's support was taken in; supportCount is the count threshold of the last pruning.
  void run(const Items& transaction, double sigmaPrev, double sigma, double supportCount);

  int nTrans = 0;            // transactions counted
  double meanLength = 0;     // running mean of the lengths
  int maxLength = 0;         // longest transaction
  double aveExt = 0;         // mean size of the work list
  int maxExt = 0;            // largest work list
  int longestCandidate = 0;  // longest candidate formed
  int longAdded = 0;         // longest set added

 private:
  struct Found {  // an entry of the work list: a stored set that the transaction contains
    Items set;
    Counter* counter;
  };

  void extend(const Found& base, int item, const Counter& single);
  bool boundOfPair(const Counter& single, int bound, int& maxMissed) const;
  bool boundOfLonger(const Items& candidate, int bound, int& maxMissed);

  int maxLengthSet_;
  PlainDictionary& dictionary_;
  std::vector<Found> workList_;
  double sigmaPrev_ = 0;
  double sigma_ = 0;
};

}  // namespace oracle
