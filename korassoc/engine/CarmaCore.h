// The worker that takes one transaction at a time through the two passes.

#pragma once

#include <cstdint>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/ExactCounter.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/engine/Transaction.h"

// CarmaCore counts a transaction's stored subsets and, in phase I, adds the candidates that it calls for.
//
// The phase I step keeps a work list of the stored sets that the transaction holds, in the order in which
// they are found; each further item of the transaction extends every set on it by one item:
//
//   items_   1  3  8                                 the transaction, ascending
//   work_    {1}  {3} {1 3}  {8} {1 8} {3 8} ...     only stored sets whose one-item sets reach the threshold
//
// Ownership: owns its buffers; knows a dictionary only during a call.
// Cost of a step: one look-up for each pair of a work list entry and a later item. Where the dictionary is
// closed under taking subsets, the pair {1 3}, 8 is passed over when {1 8} is not stored.
class CarmaCore {
 public:
  // maxLengthSet: most items of a stored set. maxTranLength: items that room is made for; longer transactions
  // are handled in full.
  CarmaCore(int maxLengthSet, int maxTranLength);

  // Phase I for one transaction. sigmaPrev and sigma: the average support (fraction) before and after this
  // transaction's own was added; supportCount: the count to which the last pruning cut, 1.0 before the first.
  // Answers OK; 3/error when the dictionary refused a new set, what was counted so far staying counted;
  // 40001/error when the dictionary failed. An exception of the transaction itself is let through. Nothing is
  // counted when a callback of the transaction has built the lattice.
  KorAssoc::KorStatus step(SetDictionary& dictionary, const Transaction& transaction, double sigmaPrev,
                           double sigma, double supportCount);

  // Starts a second pass in which every stored set of at least fromLevel items is counted anew, from 0.
  void preparePhaseII(SetDictionary& dictionary, int fromLevel);
  // Counts one transaction of the second pass, whatever the order of the transactions. The dictionary must
  // hold the sets that it held when the pass was prepared.
  void stepPhaseII(const SetDictionary& dictionary, const Transaction& transaction);

  // Gives up what the steps count by, before sets leave the dictionary; steps of a pass that goes on all the
  // same count nothing.
  void endPhaseII();

  // Notes the number of a transaction that a complete pass has read.
  void noteTransactionII(int number) { nTransII_ = number; }

  // Transactions counted by phase I, and by the second pass that ran last.
  int transactions() const { return nTrans_; }
  int transactionsII() const { return nTransII_; }
  // Mean and largest size of the work list.
  double averageExtension() const { return aveExt_; }
  int maxExtension() const { return maxExt_; }
  // Items of the longest candidate formed, and of the longest set added.
  int longestCandidate() const { return longestCandidate_; }
  int longAdded() const { return longAdded_; }
  // The average support (fraction) after the last transaction.
  double averageSupport() const { return sigma_; }
  double meanLength() const { return meanLength_; }
  int maxLength() const { return maxLength_; }

  // What a restored engine goes on from.
  void restoreTransactions(int transactions, double averageSupport);
  void restoreStatistics(double averageExtension, int maxExtension, int longestCandidate, int longAdded);

 private:
  struct Found {
    const int* items;  // as stored in the dictionary; of a set on disk, in items_
    int length;
    int parent;  // the place of this set without its last item; -1: of a set of one item
    std::uint64_t code;
    SetCounter* descriptor;
  };
  // What the step decides by, computed once for a transaction.
  struct Bounds {
    int extendFrom;    // count of a one-item set from which on it is extended
    int supportBound;  // a set whose upper bound stays below it is no candidate
    int missedBefore;  // transactions that a set may have missed by the thresholds so far
    double averageSupport;
  };

  void fetch(const Transaction& transaction);
  bool handleItem(SetDictionary& dictionary, const int& item, const Bounds& bounds);
  bool extendAll(SetDictionary& dictionary, std::size_t parents, const ItemSetView& item,
                 const SetCounter& single, const Bounds& bounds);
  bool extend(SetDictionary& dictionary, std::size_t place, const ItemSetView& item, const SetCounter& single,
              const Bounds& bounds);
  ItemSetView candidate(const Found& parent, const ItemSetView& item);
  static long long missedPair(const SetCounter& single, const Bounds& bounds, long long parentBound);
  bool checkSubsets(SetDictionary& dictionary, const ItemSetView& candidate, const Bounds& bounds,
                    long long parentBound, long long& missed);
  bool add(SetDictionary& dictionary, const ItemSetView& set, int missed);
  void releaseUnused(SetDictionary& dictionary);

  int maxLengthSet_;
  std::vector<int> items_;      // the transaction's items, ascending, repeats kept
  std::vector<int> candidate_;  // a stored set and one more item
  std::vector<int> subset_;     // the candidate without one of its items
  std::vector<Found> work_;
  std::vector<char> extended_;           // by place: whether the set with the item at hand is stored
  bool closed_ = false;                  // of the transaction at hand: see SetDictionary::isClosed()
  std::vector<const SetCounter*> used_;  // the descriptors on the work list, ascending, to look one up
  int heldOfUse_ = 0;                    // evicted sets that were on the work list when last looked
  korassoc::detail::ExactCounter exact_;
  int nTrans_ = 0;
  int nTransII_ = 0;
  double sigma_ = 0.0;
  double meanLength_ = 0.0;
  int maxLength_ = 0;
  double aveExt_ = 0.0;
  int maxExt_ = 0;
  int longestCandidate_ = 0;
  int longAdded_ = 0;
};
