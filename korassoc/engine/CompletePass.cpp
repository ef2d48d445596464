#include "korassoc/engine/CompletePass.h"

#include <algorithm>
#include <limits>

#include "korassoc/itemsets/CountBound.h"

namespace korassoc::detail {

// Sorts the itemsets by their sizes and puts the items themselves in the place of their ranks.
class CompletePass::Collector final : public ItemsetSink {
 public:
  Collector(CompletePass& pass, const RankedItems& ranked) : pass_(pass), ranked_(ranked) {}

  bool take(const std::uint32_t* ranks, std::size_t n, int count) override {
    if (sets_ >= pass_.limits_.maxSets) {
      outcome_ = Outcome::kTooManySets;
      return false;
    }
    constexpr int kSetsBetweenLooks = 1024;
    if (++sets_ % kSetsBetweenLooks == 0 && !goesOn()) return false;
    std::vector<CompleteLevel>& levels = pass_.found_.levels;
    if (levels.size() < n) levels.resize(n);
    std::vector<int>& items = levels[n - 1].items;
    for (std::size_t i = 0; i < n; ++i) items.push_back(ranked_.items[ranks[i]]);
    std::sort(items.end() - static_cast<std::ptrdiff_t>(n), items.end());
    levels[n - 1].counts.push_back(count);
    return true;
  }

  bool goesOn() override {
    if (pass_.watch_.cancelled()) outcome_ = Outcome::kCancelled;
    return outcome_ == Outcome::kDone;
  }

  Outcome outcome() const { return outcome_; }

 private:
  CompletePass& pass_;
  const RankedItems& ranked_;
  int sets_ = 0;
  Outcome outcome_ = Outcome::kDone;
};

CompletePass::CompletePass(MultiPassTransIter& source, const CompletePassLimits& limits, const Watch& watch)
    : source_(source), limits_(limits), watch_(watch), index_(limits.budgetBytes) {}

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
    index_.add(transaction);
    watch_.onRead(number);
  });
  if (read != Outcome::kDone) return read;
  found_.transactionCount = index_.transactionCount();
  minCount_ = completeCountBound(found_.transactionCount, limits_.minSupport);
  if (limits_.maxLength < 1) return Outcome::kDone;

  const RankedItems ranked = index_.rank(minCount_);
  Collector collector(*this, ranked);
  for (std::uint32_t rank = 0; rank < ranked.items.size(); ++rank) {
    if (!collector.take(&rank, 1, ranked.counts[rank])) return collector.outcome();
  }
  if (limits_.maxLength < 2) return Outcome::kDone;
  if (!index_.complete()) return enumerateInParts(ranked, collector);
  RankedRows rows;
  index_.toRows(ranked, rows);
  ItemsetEnumerator enumerator(minCount_, static_cast<std::size_t>(limits_.maxLength), collector);
  enumerator.enumerate(rows, 0, ranked.items.size());
  return collector.outcome();
}

// The ranks of the transaction's frequent items, ascending and without repeats.
void CompletePass::rankRow(const Transaction& transaction, const RankedItems& ranked,
                           std::vector<std::uint32_t>& row) const {
  row.clear();
  const int length = transaction.GetLength();
  for (int i = 0; i < length; ++i) {
    const std::uint32_t code = index_.codes().find(transaction.GetItem(i));
    if (code != ItemCodes::kNone && ranked.rankOf[code] != ItemCodes::kNone)
      row.push_back(ranked.rankOf[code]);
  }
  std::sort(row.begin(), row.end());
  row.erase(std::unique(row.begin(), row.end()), row.end());
}

// The bytes of index that each rank calls for, at most: its rows up to it.
CompletePass::Outcome CompletePass::costsOfRanks(const RankedItems& ranked,
                                                 std::vector<std::uint64_t>& costs) {
  costs.assign(ranked.items.size(), 0);
  std::vector<std::uint32_t> row;
  return readAll([&](const Transaction& transaction, int number) {
    if (number > index_.transactionCount()) return;
    rankRow(transaction, ranked, row);
    for (std::size_t i = 0; i < row.size(); ++i) costs[row[i]] += TransactionIndex::bytesFor(i + 1, 1);
  });
}

CompletePass::Outcome CompletePass::enumerateInParts(const RankedItems& ranked, Collector& collector) {
  std::vector<std::uint64_t> costs;
  const Outcome costed = costsOfRanks(ranked, costs);
  if (costed != Outcome::kDone) return costed;
  ItemsetEnumerator enumerator(minCount_, static_cast<std::size_t>(limits_.maxLength), collector);
  RankedRows rows;
  std::vector<std::uint32_t> row;
  for (std::size_t first = 0; first < costs.size();) {
    std::uint64_t bytes = costs[first];
    std::size_t end = first + 1;
    while (end < costs.size() && bytes + costs[end] <= limits_.budgetBytes) bytes += costs[end++];
    rows.clear();
    const Outcome read = readAll([&](const Transaction& transaction, int number) {
      if (number > index_.transactionCount()) return;
      rankRow(transaction, ranked, row);
      while (!row.empty() && row.back() >= end) row.pop_back();
      if (row.size() >= 2 && row.back() >= first) rows.addRow(row);
    });
    if (read != Outcome::kDone) return read;
    rows.listOccurrences(ranked.items.size());
    if (!enumerator.enumerate(rows, first, end)) break;
    first = end;
  }
  return collector.outcome();
}

}  // namespace korassoc::detail
