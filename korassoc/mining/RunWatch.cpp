#include "korassoc/mining/RunWatch.h"

#include <algorithm>
#include <string>

#include "korassoc/mining/Error.h"

namespace korassoc::detail {

RunWatch::RunWatch(const MiningOptions& options, std::int64_t transactions)
    : options_(options), transactions_(transactions) {}

bool RunWatch::hasToEnd() {
  constexpr unsigned kQuestionsBetweenLooks = 256;  // a look at the clock takes as long as a short basket
  if (outOfTime_ || options_.stop.stop_requested()) return true;
  if (!options_.timeLimit || asked_++ % kQuestionsBetweenLooks != 0) return false;
  outOfTime_ = Clock::now() - start_ > *options_.timeLimit;
  return outOfTime_;
}

void RunWatch::throwReason() const {
  if (!outOfTime_) throw Error(Error::Kind::kCancelled, "the run was stopped");
  throw Error(Error::Kind::kLimit, "the run took longer than " + std::to_string(options_.timeLimit->count()) +
                                       " seconds, after " + std::to_string(read_) + " of " +
                                       std::to_string(transactions_) + " transactions and " +
                                       std::to_string(found_) + " itemsets");
}

void RunWatch::onRead(int transactions) {
  constexpr int kTransactionsBetweenReports = 10000;
  read_ = transactions;
  if (transactions % kTransactionsBetweenReports == 0 || transactions == transactions_) {
    report(Progress::Phase::kReading);
  }
}

void RunWatch::onFound(int itemsets) {
  found_ = itemsets;
  report(Progress::Phase::kFinding);
}

void RunWatch::report(Progress::Phase phase) {
  if (!options_.onProgress) return;
  const double share =
      static_cast<double>(read_) / static_cast<double>(std::max<std::int64_t>(transactions_, 1));
  options_.onProgress({phase, read_, found_, share});
}

}  // namespace korassoc::detail
