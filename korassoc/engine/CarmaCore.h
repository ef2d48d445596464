// The worker that takes one transaction at a time through the two passes.

#pragma once

#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/ExactCounter.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/engine/PhaseIStep.h"
#include "korassoc/engine/Transaction.h"
#include "korassoc/engine/TransactionSequence.h"

// CarmaCore counts a transaction's stored subsets and, in phase I, adds the candidates that it calls for
// (PhaseIStep).
//
// Ownership: owns its buffers; knows a dictionary only during a call.
class CarmaCore {
 public:
  // maxLengthSet: most items of a stored set. maxTranLength: items that room is made for; longer transactions
  // are handled in full.
  CarmaCore(int maxLengthSet, int maxTranLength);

  // Phase I for one transaction. sigmaPrev and sigma: the average support (fraction) before and after this
  // transaction's own was added; supportCount: the count to which the last pruning cut, 1.0 before the first.
  // Answers OK; 3/error when the dictionary refused a new set, what was counted so far staying counted;
  // 40001/error when the dictionary failed. An exception of the transaction itself is let through.
  KorAssoc::KorStatus step(SetDictionary& dictionary, const Transaction& transaction, double sigmaPrev,
                           double sigma, double supportCount);

  // Starts a second pass in which every stored set of at least fromLevel items is counted anew, from 0,
  // whatever the order of the transactions.
  void preparePhaseII(SetDictionary& dictionary, int fromLevel);
  // Starts a second pass over the transactions of the first, in their order, in which every stored set of at
  // least fromLevel items is counted only in those before its TID: phase I has counted it in all others.
  // False, and nothing done, where that is not certain: the dictionary is not the work of this core's steps
  // alone, has evicted sets, or a step has ended early.
  bool preparePhaseIIBeforeTIDs(SetDictionary& dictionary, int fromLevel);
  // Counts one transaction of the second pass. The dictionary must hold the sets that it held when the pass
  // was prepared.
  void stepPhaseII(const SetDictionary& dictionary, const Transaction& transaction);
  // After the last step of a second pass: whether its counts are worth nothing, because they stand on those
  // of the first pass and the transactions were others.
  bool hasMetOthers() const { return countsBeforeTIDs_ && second_ != first_; }

  // Gives up what the steps count by, before sets leave the dictionary.
  void endPhaseII();

  // Notes the number of a transaction that a complete pass has read.
  void noteTransactionII(int number) { nTransII_ = number; }
  // Notes how many itemsets of one or more items a complete pass has found so far.
  void noteItemsets(int found) { itemsets_ = found; }

  // Transactions counted by phase I, and by the second pass that ran last.
  int transactions() const { return nTrans_; }
  int transactionsII() const { return nTransII_; }
  // Itemsets found by the complete pass that ran last; 0 before the first.
  int itemsets() const { return itemsets_; }
  // Mean and largest size of the work list.
  double averageExtension() const { return aveExt_; }
  int maxExtension() const { return maxExt_; }
  // Items of the longest candidate formed, and of the longest set added.
  int longestCandidate() const { return records_.longestCandidate; }
  int longAdded() const { return records_.longAdded; }
  // The average support (fraction) after the last transaction.
  double averageSupport() const { return sigma_; }
  double meanLength() const { return meanLength_; }
  int maxLength() const { return maxLength_; }

  // What a restored engine goes on from.
  void restoreTransactions(int transactions, double averageSupport);
  void restoreStatistics(double averageExtension, int maxExtension, int longestCandidate, int longAdded);

 private:
  // How the transactions of phase I were counted: each to its end and by itself; so, until the step that is
  // on; or there is one that was not.
  enum class Steps { kWhole, kRunning, kBroken };

  void fetch(const Transaction& transaction);
  void beginPhaseII(SetDictionary& dictionary, int fromLevel,
                    korassoc::detail::ExactCounter::Counted counted);
  template <typename Step>
  bool runStep(Step& step, SetDictionary& dictionary, const korassoc::detail::StepBounds& bounds);

  std::vector<int> items_;  // the transaction's items, ascending, repeats kept
  korassoc::detail::PhaseIStep<korassoc::detail::EntrySets> entryStep_;
  korassoc::detail::PhaseIStep<korassoc::detail::PackedSets> packedStep_;
  korassoc::detail::StepRecords records_;
  korassoc::detail::ExactCounter exact_;
  Steps steps_ = Steps::kWhole;
  bool countsBeforeTIDs_ = false;                // in the second pass that is on
  korassoc::detail::TransactionSequence first_;  // what the passes have met
  korassoc::detail::TransactionSequence second_;
  int nTrans_ = 0;
  int nTransII_ = 0;
  int itemsets_ = 0;
  double sigma_ = 0.0;
  double meanLength_ = 0.0;
  int maxLength_ = 0;
  double aveExt_ = 0.0;
  int maxExt_ = 0;
};
