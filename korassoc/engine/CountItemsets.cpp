#include "korassoc/engine/CountItemsets.h"

#include <limits>
#include <utility>

#include "korassoc/engine/CompletePass.h"
#include "korassoc/engine/GivenItemsets.h"

namespace korassoc {

namespace {

using detail::CompletePass;

constexpr int kMostTransactions = std::numeric_limits<int>::max();

// The levels one after the other, each given up as soon as it is copied.
ItemsetColumns columnsOf(detail::CompleteItemsets found) {
  ItemsetColumns columns;
  columns.transactions = found.transactionCount;
  const std::size_t sets = found.size();
  columns.offsets.reserve(sets + 1);
  columns.counts.reserve(sets);
  std::size_t items = 0;
  for (const detail::CompleteLevel& level : found.levels) items += level.items.size();
  columns.items.reserve(items);
  for (std::size_t length = 1; length <= found.levels.size(); ++length) {
    const detail::CompleteLevel level = std::move(found.levels[length - 1]);
    columns.items.insert(columns.items.end(), level.items.begin(), level.items.end());
    columns.counts.insert(columns.counts.end(), level.counts.begin(), level.counts.end());
    for (std::size_t i = 0; i < level.counts.size(); ++i) {
      columns.offsets.push_back(columns.offsets.back() + static_cast<std::int64_t>(length));
    }
  }
  return columns;
}

CountOutcome outcomeOf(CompletePass::Outcome outcome) {
  switch (outcome) {
    case CompletePass::Outcome::kCancelled:
      return CountOutcome::kCancelled;
    case CompletePass::Outcome::kNotRestarted:
      return CountOutcome::kNotRestarted;
    case CompletePass::Outcome::kTooManySets:
      return CountOutcome::kTooManyItemsets;
    case CompletePass::Outcome::kDone:
      break;
  }
  return CountOutcome::kDone;
}

// The watch with a function for each question.
CompletePass::Watch complete(const CountWatch& watch) {
  CompletePass::Watch complete{watch.cancelled, watch.onRead};
  if (!complete.cancelled) complete.cancelled = [] { return false; };
  if (!complete.onRead) complete.onRead = [](int) {};
  return complete;
}

}  // namespace

CountOutcome countAllItemsets(MultiPassTransIter& source, const CompleteCountLimits& limits,
                              const CountWatch& watch, ItemsetColumns& itemsets) {
  const CompletePass::Watch watched = complete(watch);
  CompletePass pass(source, {limits.minSupport, limits.maxLength, limits.maxItemsets, limits.indexBytes},
                    watched);
  const CountOutcome outcome = outcomeOf(pass.run());
  if (outcome != CountOutcome::kDone) return outcome;
  detail::CompleteItemsets found = pass.takeItemsets();
  if (found.transactionCount == kMostTransactions && source.HasNext())
    return CountOutcome::kTooManyTransactions;
  itemsets = columnsOf(std::move(found));
  return CountOutcome::kDone;
}

CountOutcome countGivenItemsets(MultiPassTransIter& source, const CountWatch& watch,
                                ItemsetColumns& itemsets) {
  const CompletePass::Watch watched = complete(watch);
  detail::GivenItemsets sets(itemsets.offsets, itemsets.items, watched.cancelled);
  if (source.Restart() != 0) return CountOutcome::kNotRestarted;
  int transactions = 0;
  while (source.HasNext()) {
    if (watched.cancelled()) return CountOutcome::kCancelled;
    const Transaction* transaction = source.Next();
    if (transaction == nullptr) break;
    if (transactions == kMostTransactions) return CountOutcome::kTooManyTransactions;
    ++transactions;
    if (!sets.add(*transaction)) return CountOutcome::kCancelled;
    watched.onRead(transactions);
  }
  if (!sets.finish()) return CountOutcome::kCancelled;
  std::vector<int> counts = sets.counts();
  itemsets.transactions = transactions;
  itemsets.counts = std::move(counts);
  itemsets.maxMissed.clear();
  return CountOutcome::kDone;
}

}  // namespace korassoc
