#include "korassoc/engine/CompletePass.h"

#include <algorithm>
#include <limits>

#include "korassoc/engine/PassedFilter.h"
#include "korassoc/itemsets/CountBound.h"

namespace korassoc::detail {

// Sorts the itemsets by their sizes and puts the items themselves in the place of their ranks.
class CompletePass::Collector final : public ItemsetSink {
 public:
  explicit Collector(CompletePass& pass)
      : pass_(pass),
        callsAfter_(pass.watch_.itemsetsBetweenCalls > 0 ? pass.watch_.itemsetsBetweenCalls : kNever) {}

  bool take(const std::uint32_t* ranks, std::size_t n, int count) override {
    if (sets_ >= pass_.limits_.maxSets) {
      outcome_ = Outcome::kTooManySets;
      return false;
    }
    constexpr int kSetsBetweenLooks = 1024;
    if (++sets_ % kSetsBetweenLooks == 0 && !mayGoOn()) return false;
    if (!work(1)) return false;
    std::vector<CompleteLevel>& levels = pass_.found_.levels;
    if (levels.size() < n) levels.resize(n);
    std::vector<int>& items = levels[n - 1].items;
    for (std::size_t i = 0; i < n; ++i) items.push_back(pass_.ranked_.items[ranks[i]]);
    std::sort(items.end() - static_cast<std::ptrdiff_t>(n), items.end());
    levels[n - 1].counts.push_back(count);
    return true;
  }

  // The walk asks when it has tried to extend many sets, or one item. That counts as work, too: a search that
  // finds nothing for a long time must still be heard of.
  bool goesOn() override {
    constexpr int kSetsOfALook = 64;
    return mayGoOn() && work(kSetsOfALook);
  }

  Outcome outcome() const { return outcome_; }

 private:
  static constexpr int kNever = std::numeric_limits<int>::max();

  bool mayGoOn() {
    if (pass_.watch_.cancelled()) outcome_ = Outcome::kCancelled;
    return outcome_ == Outcome::kDone;
  }

  // Adds to the work since the last call of onFound, and makes the next one when it is due.
  bool work(int sets) {
    if (callsAfter_ == kNever) return true;
    work_ += sets;
    if (work_ < callsAfter_) return true;
    work_ = 0;
    pass_.watch_.onFound(sets_);
    return mayGoOn();  // the call may have cancelled the pass
  }

  CompletePass& pass_;
  int callsAfter_;
  std::int64_t work_ = 0;
  int sets_ = 0;
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
  const Outcome enumerated = blocks_ != nullptr ? enumerateBlocks(collector) : enumerateIndex(collector);
  return enumerated == Outcome::kDone ? collector.outcome() : enumerated;
}

// What follows answers whether the source was read; whether the sink went on is for the sink to say.

CompletePass::Outcome CompletePass::enumerateIndex(ItemsetSink& sink) {
  if (!index_.complete()) return enumerateInParts(sink);
  RankedRows rows;
  index_.toRows(ranked_, rows);
  index_.giveUp();
  ItemsetEnumerator(minCount_, static_cast<std::size_t>(limits_.maxLength), sink)
      .enumerate(rows, 0, ranked_.items.size());
  return Outcome::kDone;
}

CompletePass::Outcome CompletePass::enumerateBlocks(ItemsetSink& sink) {
  if (!blocks_->handOn(ranked_, minCount_, sink)) return Outcome::kDone;
  passed_ = blocks_->passedSets(ranked_, minCount_);
  blocks_.reset();
  if (passed_.size() == 0) return Outcome::kDone;
  PassedFilter filter(passed_, sink);
  return enumerateInParts(filter);
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

CompletePass::Outcome CompletePass::enumerateInParts(ItemsetSink& sink) {
  std::vector<std::uint64_t> costs;
  const Outcome costed = costsOfRanks(costs);
  if (costed != Outcome::kDone) return costed;
  ItemsetEnumerator enumerator(minCount_, static_cast<std::size_t>(limits_.maxLength), sink);
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
    if (!enumerator.enumerate(rows, first, end)) break;
    first = end;
  }
  return Outcome::kDone;
}

}  // namespace korassoc::detail
