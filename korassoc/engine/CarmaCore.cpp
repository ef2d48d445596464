#include "korassoc/engine/CarmaCore.h"

#include <algorithm>
#include <limits>

#include "korassoc/engine/Exceptions.h"
#include "korassoc/itemsets/CountBound.h"

using KorAssoc::KorStatus;
using korassoc::detail::ExactCounter;

namespace {

constexpr bool kError = false;

}  // namespace

CarmaCore::CarmaCore(int maxLengthSet, int maxTranLength)
    : entryStep_(maxLengthSet), packedStep_(maxLengthSet) {
  constexpr int kReserveAtMost = 1 << 16;  // a limit set out of reach costs no memory
  items_.reserve(static_cast<std::size_t>(std::clamp(maxTranLength, 0, kReserveAtMost)));
}

void CarmaCore::fetch(const Transaction& transaction) {
  const int length = std::max(transaction.GetLength(), 0);
  items_.clear();
  for (int i = 0; i < length; ++i) items_.push_back(transaction.GetItem(i));
  if (!std::is_sorted(items_.begin(), items_.end())) std::sort(items_.begin(), items_.end());
}

KorStatus CarmaCore::step(SetDictionary& dictionary, const Transaction& transaction, double sigmaPrev,
                          double sigma, double supportCount) {
  // A step that still runs has been left by an exception.
  steps_ = steps_ == Steps::kWhole ? Steps::kRunning : Steps::kBroken;
  const int length = std::max(transaction.GetLength(), 0);
  if (nTrans_ < std::numeric_limits<int>::max()) ++nTrans_;
  meanLength_ = (nTrans_ * meanLength_ + length) / nTrans_;
  maxLength_ = std::max(maxLength_, length);
  sigma_ = sigma;
  fetch(transaction);
  first_.add(items_);

  using korassoc::detail::countBound;
  using korassoc::detail::raisedCountBound;
  const korassoc::detail::StepBounds bounds{nTrans_, raisedCountBound(supportCount),
                                            raisedCountBound(nTrans_ * sigma),
                                            countBound((nTrans_ - 1) * sigmaPrev), sigma};
  bool stored = true;
  try {
    dictionary.increment(ItemSetView(nullptr, 0));
    if (std::adjacent_find(items_.begin(), items_.end()) != items_.end()) dictionary.setOpen();
    // Packed sets know no transactions below 0, with which a restored engine may go on; entries do.
    stored = dictionary.isPacked() && nTrans_ >= 0 ? runStep(packedStep_, dictionary, bounds)
                                                   : runStep(entryStep_, dictionary, bounds);
  } catch (...) {
    korassoc::detail::discardCurrentException();
    return KorStatus(40001, kError);
  }
  if (!stored) return KorStatus(3, kError);
  if (steps_ == Steps::kRunning) steps_ = Steps::kWhole;
  return KorStatus();
}

template <typename Step>
bool CarmaCore::runStep(Step& step, SetDictionary& dictionary, const korassoc::detail::StepBounds& bounds) {
  const bool stored = step.run(dictionary, items_, bounds, records_);
  const auto extension = static_cast<int>(step.workSize());
  maxExt_ = std::max(maxExt_, extension);
  aveExt_ = (extension + (nTrans_ - 1) * aveExt_) / nTrans_;
  return stored;
}

void CarmaCore::preparePhaseII(SetDictionary& dictionary, int fromLevel) {
  beginPhaseII(dictionary, fromLevel, ExactCounter::Counted::kNothing);
}

// As long as the sets are packed nobody else has had a hand in their counts and TIDs. In a closed dictionary
// a transaction's step meets every stored set that it holds: a set's subsets have been there for as long as
// the set, and the pruning leaves no one-item set below the count from which the step extends it.
bool CarmaCore::preparePhaseIIBeforeTIDs(SetDictionary& dictionary, int fromLevel) {
  if (steps_ != Steps::kWhole || !dictionary.isPacked() || !dictionary.isClosed()) return false;
  beginPhaseII(dictionary, fromLevel, ExactCounter::Counted::kSinceStored);
  return true;
}

void CarmaCore::beginPhaseII(SetDictionary& dictionary, int fromLevel, ExactCounter::Counted counted) {
  nTransII_ = 0;
  countsBeforeTIDs_ = counted == ExactCounter::Counted::kSinceStored;
  second_ = {};
  dictionary.prepareExactCounting(fromLevel, countsBeforeTIDs_);
  exact_.prepare(dictionary, fromLevel, counted);
}

void CarmaCore::stepPhaseII(const SetDictionary& dictionary, const Transaction& transaction) {
  if (nTransII_ < std::numeric_limits<int>::max()) ++nTransII_;
  fetch(transaction);
  if (countsBeforeTIDs_) second_.add(items_);
  dictionary.noteCounting();
  if (exact_.isDone()) return;
  std::erase_if(items_, [&dictionary](int item) { return !dictionary.isMarked(item); });
  exact_.count(items_);
}

void CarmaCore::endPhaseII() {
  exact_.clear();
  countsBeforeTIDs_ = false;
}

void CarmaCore::restoreTransactions(int transactions, double averageSupport) {
  steps_ = Steps::kBroken;
  nTrans_ = transactions;
  sigma_ = averageSupport;
}

void CarmaCore::restoreStatistics(double averageExtension, int maxExtension, int longestCandidate,
                                  int longAdded) {
  aveExt_ = averageExtension;
  maxExt_ = maxExtension;
  records_ = {longestCandidate, longAdded};
}
