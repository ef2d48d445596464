#include "korassoc/engine/CompletePass.h"

#include <algorithm>
#include <limits>
#include <new>

#include "korassoc/engine/CertainItemsets.h"
#include "korassoc/engine/FittingCount.h"
#include "korassoc/engine/PassedFilter.h"
#include "korassoc/itemsets/CountBound.h"

namespace korassoc::detail {

// Keeps the watch informed while itemsets are enumerated.
class CompletePass::Pulse {
 public:
  // sets: found already.
  explicit Pulse(const Watch& watch, int sets = 0)
      : watch_(watch),
        callsAfter_(watch.itemsetsBetweenCalls > 0 ? watch.itemsetsBetweenCalls : kNever),
        sets_(sets) {}

  // Tell of an itemset found, and of a look at the work: many sets tried, or one item. A look counts as work,
  // too: a search that finds nothing for a long time must still be heard of. False when it was cancelled.
  bool found() {
    constexpr int kSetsBetweenLooks = 1024;
    if (++sets_ % kSetsBetweenLooks == 0 && !goesOn()) return false;
    return work(1);
  }
  bool look() {
    constexpr int kSetsOfALook = 64;
    return goesOn() && work(kSetsOfALook);
  }

  int sets() const { return sets_; }

 private:
  static constexpr int kNever = std::numeric_limits<int>::max();

  bool goesOn() const { return !watch_.cancelled(); }

  bool work(int sets) {
    if (callsAfter_ == kNever) return true;
    work_ += sets;
    if (work_ < callsAfter_) return true;
    work_ = 0;
    watch_.onFound(sets_);
    return goesOn();  // the call may have cancelled the pass
  }

  const Watch& watch_;
  int callsAfter_;
  std::int64_t work_ = 0;  // since the last call of onFound
  int sets_;
};

// Sorts the itemsets by their sizes and puts the items themselves in the place of their ranks.
class CompletePass::Collector final : public ItemsetSink {
 public:
  explicit Collector(CompletePass& pass)
      : pass_(pass),
        pulse_(pass.watch_),
        lookAheadAt_(std::max(pass.limits_.lookAheadSets,
                              pass.limits_.maxSets / std::max(pass.limits_.lookAheadPart, 1))) {}

  bool take(const std::uint32_t* ranks, std::size_t n, int count) override {
    if (pulse_.sets() >= pass_.limits_.maxSets ||
        (pulse_.sets() == lookAheadAt_ && pass_.tooManyAreCertain())) {
      outcome_ = Outcome::kTooManySets;
      return false;
    }
    if (!goesOn(pulse_.found())) return false;
    std::vector<CompleteLevel>& levels = pass_.found_.levels;
    if (levels.size() < n) levels.resize(n);
    std::vector<int>& items = levels[n - 1].items;
    for (std::size_t i = 0; i < n; ++i) items.push_back(pass_.ranked_.items[ranks[i]]);
    std::sort(items.end() - static_cast<std::ptrdiff_t>(n), items.end());
    levels[n - 1].counts.push_back(count);
    return true;
  }

  bool goesOn() override { return goesOn(pulse_.look()); }

  Outcome outcome() const { return outcome_; }

 private:
  bool goesOn(bool notCancelled) {
    if (!notCancelled) outcome_ = Outcome::kCancelled;
    return outcome_ == Outcome::kDone;
  }

  CompletePass& pass_;
  Pulse pulse_;
  int lookAheadAt_;
  Outcome outcome_ = Outcome::kDone;
};

CompletePass::CompletePass(MultiPassTransIter& source, const CompletePassLimits& limits, const Watch& watch)
    : source_(source),
      limits_(limits),
      watch_(watch),
      index_(limits.maxLength < 2 ? 0 : limits.budgetBytes) {}

template <typename Handle>
CompletePass::Outcome CompletePass::readAll(Handle&& handle) {
  if (source_.Restart() != 0) return Outcome::kNotRestarted;
  for (int number = 1; source_.HasNext(); ++number) {
    if (watch_.cancelled()) return Outcome::kCancelled;
    const Transaction* transaction = source_.Next();
    if (transaction == nullptr) break;
    handle(*transaction, number);
    if (number == std::numeric_limits<int>::max()) break;
  }
  return Outcome::kDone;
}

CompletePass::Outcome CompletePass::run() {
  const Outcome read = readAll([this](const Transaction& transaction, int number) {
    if (sampleIsFull()) startBlocks();
    codes_.clear();
    items_.add(transaction, codes_);
    if (blocks_ != nullptr) {
      blocks_->add(codes_);
    } else {
      index_.add(codes_);
    }
    watch_.onRead(number);
  });
  if (read != Outcome::kDone) return read;
  if (blocks_ != nullptr && !blocks_->finish()) return Outcome::kCancelled;
  found_.transactionCount = items_.transactionCount();
  minCount_ = completeCountBound(found_.transactionCount, limits_.minSupport);
  if (limits_.maxLength < 1) return Outcome::kDone;

  ranked_ = items_.rank(minCount_);
  Collector collector(*this);
  for (std::uint32_t rank = 0; rank < ranked_.items.size(); ++rank) {
    if (!collector.take(&rank, 1, ranked_.counts[rank])) return collector.outcome();
  }
  if (limits_.maxLength < 2) return Outcome::kDone;
  const Outcome enumerated = blocks_ != nullptr ? enumerateBlocks(collector) : enumerateRows(collector);
  return enumerated == Outcome::kDone ? collector.outcome() : enumerated;
}

// What follows answers whether the source was read; whether the sink went on is for the sink to say.

bool CompletePass::tooManyAreCertain() const {
  if (now_.rows == nullptr) return false;
  // The single items are found whatever their pairs are.
  const double enough = static_cast<double>(limits_.maxSets) - static_cast<double>(ranked_.items.size());
  return certainItemsets(*now_.rows, now_.firstRank, now_.endRank, ranked_.counts, minCount_,
                         static_cast<std::size_t>(limits_.maxLength), enough) > enough;
}

CompletePass::Outcome CompletePass::enumerateRows(ItemsetSink& sink) {
  ItemsetEnumerator enumerator(minCount_, static_cast<std::size_t>(limits_.maxLength), sink);
  const auto enumerate = [&](const RankedRows& rows, std::size_t firstRank, std::size_t endRank) {
    now_ = {&rows, firstRank, endRank};
    const bool wentOn = enumerator.enumerate(rows, firstRank, endRank);
    now_ = {};
    return wentOn;
  };
  if (!index_.complete()) return enumerateInParts(enumerate);
  RankedRows rows;
  index_.toRows(ranked_, rows);
  index_.giveUp();
  enumerate(rows, 0, ranked_.items.size());
  return Outcome::kDone;
}

CompletePass::Outcome CompletePass::enumerateBlocks(ItemsetSink& sink) {
  if (!blocks_->handOn(ranked_, minCount_, sink)) return Outcome::kDone;
  passed_ = blocks_->passedSets(ranked_, minCount_);
  blocks_.reset();
  if (passed_.size() == 0) return Outcome::kDone;
  PassedFilter filter(passed_, sink);
  return enumerateRows(filter);  // which is not complete: the sample has given it up
}

bool CompletePass::sampleIsFull() const {
  const int transactions = items_.transactionCount();
  if (sampled_ || !index_.complete() || transactions == 0) return false;
  if (index_.bytes() >= std::min(limits_.sampleBytes, limits_.budgetBytes / 2)) return true;
  return transactions >= limits_.sampleTransactions &&
         transactions * limits_.minSupport >= limits_.sampleCount;
}

// Goes over to counting in blocks, unless there would be too much to count.
void CompletePass::startBlocks() {
  sampled_ = true;
  // From half of the count on, the sample tells about what is somewhat less frequent.
  if (items_.transactionCount() * limits_.minSupport < limits_.sampleCount / 2.0) return;
  const BlockCounter::Limits limits{limits_.blockTransactions, limits_.blockBytes, limits_.budgetBytes / 8,
                                    static_cast<std::size_t>(limits_.maxLength)};
  auto blocks = std::make_unique<BlockCounter>(limits, watch_.cancelled);
  if (!blocks->start(index_, items_, limits_.minSupport)) return;
  index_.giveUp();
  blocks_ = std::move(blocks);
}

// Reads the transactions once more, as the ranks of their frequent items, ascending and without repeats: all
// of them, or those that hold a passed set when there are some.
template <typename Handle>
CompletePass::Outcome CompletePass::readRows(Handle&& handle) {
  constexpr std::size_t kMostToLookFor = 1000;  // to look for more would take longer than to index all
  const bool all = passed_.size() == 0 || passed_.size() > kMostToLookFor;
  std::vector<std::uint32_t> row;
  return readAll([&](const Transaction& transaction, int number) {
    if (number > found_.transactionCount) return;
    codes_.clear();
    const int length = transaction.GetLength();
    for (int i = 0; i < length; ++i) codes_.push_back(items_.codes().find(transaction.GetItem(i)));
    ranked_.rankRow(codes_, row);
    row.erase(std::unique(row.begin(), row.end()), row.end());
    if (all || passed_.isWithin(row)) handle(row);
  });
}

// The bytes of index that each rank calls for, at most: its rows up to it. Nothing when all are sure to fit.
CompletePass::Outcome CompletePass::costsOfRanks(std::vector<std::uint64_t>& costs) {
  costs.assign(ranked_.items.size(), 0);
  std::uint64_t occurrences = 0;
  for (const int count : ranked_.counts) occurrences += static_cast<std::uint64_t>(count);
  const auto transactions = static_cast<std::uint64_t>(found_.transactionCount);
  if (TransactionIndex::bytesFor(occurrences, transactions) <= limits_.budgetBytes) return Outcome::kDone;
  return readRows([&costs](const std::vector<std::uint32_t>& row) {
    for (std::size_t i = 0; i < row.size(); ++i) costs[row[i]] += TransactionIndex::bytesFor(i + 1, 1);
  });
}

template <typename Enumerate>
CompletePass::Outcome CompletePass::enumerateInParts(Enumerate&& enumerate) {
  std::vector<std::uint64_t> costs;
  const Outcome costed = costsOfRanks(costs);
  if (costed != Outcome::kDone) return costed;
  RankedRows rows;
  for (std::size_t first = 0; first < costs.size();) {
    std::uint64_t bytes = costs[first];
    std::size_t end = first + 1;
    while (end < costs.size() && bytes + costs[end] <= limits_.budgetBytes) bytes += costs[end++];
    rows.clear();
    const Outcome read = readRows([&](std::vector<std::uint32_t>& row) {
      while (!row.empty() && row.back() >= end) row.pop_back();
      if (row.size() >= 2 && row.back() >= first) rows.addRow(row);
    });
    if (read != Outcome::kDone) return read;
    rows.listOccurrences(ranked_.items.size());
    if (!enumerate(rows, first, end)) break;
    first = end;
  }
  return Outcome::kDone;
}

int CompletePass::countThatFits() {
  // What the pass has found is a measure of its work. A million itemsets take no time worth mentioning.
  constexpr int kQuicklyFound = 1 << 20;
  const auto found = static_cast<int>(found_.size());
  const int mayPass = std::min(std::max(found, kQuicklyFound), limits_.maxSets);
  found_.levels = {};
  passed_ = {};
  blocks_.reset();
  const int firstCount = saturatingSum(minCount_, 1);
  try {
    ranked_ = items_.rank(firstCount);
    if (ranked_.counts.empty()) return 0;
    Pulse pulse(watch_, found);
    FittingCount fitting(firstCount, ranked_.counts.front(), static_cast<std::size_t>(limits_.maxLength),
                         mayPass, [&pulse] { return pulse.look(); });
    for (const int count : ranked_.counts) fitting.takeItem(count);
    const Outcome enumerated =
        enumerateInParts([&](const RankedRows& rows, std::size_t firstRank, std::size_t endRank) {
          return fitting.enumerate(rows, firstRank, endRank);
        });
    return enumerated == Outcome::kDone && !watch_.cancelled() ? fitting.count() : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

}  // namespace korassoc::detail
