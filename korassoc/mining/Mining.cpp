#include "korassoc/mining/Mining.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "korassoc/engine/CompletePass.h"
#include "korassoc/mining/BasketSource.h"
#include "korassoc/mining/Error.h"
#include "korassoc/mining/ItemsetSorter.h"
#include "korassoc/mining/RunWatch.h"

namespace korassoc {
namespace {

using detail::CompletePass;

constexpr std::int64_t kMostTransactions = std::numeric_limits<int>::max();
constexpr int kLongestItemset = 1000;
constexpr int kItemsetsBetweenReports = 100000;
constexpr std::uint64_t kIndexBytes = std::uint64_t{1} << 30;

void check(const Baskets& baskets, const MiningOptions& options) {
  if (options.longestItemset < 1 || options.longestItemset > kLongestItemset) {
    throw Error(Error::Kind::kInput, "itemsets of at most " + std::to_string(options.longestItemset) +
                                         " items are asked for; 1 to 1000 can be");
  }
  if (options.maxItemsets && *options.maxItemsets < 1) {
    throw Error(Error::Kind::kInput,
                "a limit of " + std::to_string(*options.maxItemsets) + " itemsets leaves nothing");
  }
  if (options.timeLimit && !(options.timeLimit->count() > 0)) {
    throw Error(Error::Kind::kInput,
                "a time limit of " + std::to_string(options.timeLimit->count()) + " seconds leaves nothing");
  }
  if (baskets.transactions() > kMostTransactions) {
    throw Error(Error::Kind::kLimit, "the baskets stand for " + std::to_string(baskets.transactions()) +
                                         " transactions; 2147483647 can be mined together");
  }
}

// The levels in order, each given up as soon as it is copied.
ItemsetTable tableOf(detail::CompleteItemsets found) {
  if (found.levels.empty()) return ItemsetTable();
  detail::ItemsetSorter sorter{detail::ItemRanks(found.levels.front().items)};
  std::size_t items = 0;
  for (const detail::CompleteLevel& level : found.levels) items += level.items.size();
  sorter.reserve(found.size(), items);
  for (std::size_t length = 1; length <= found.levels.size(); ++length) {
    const detail::CompleteLevel level = std::move(found.levels[length - 1]);
    sorter.addLevel<int>(length, level.items, level.counts, {});
  }
  return sorter.take();
}

[[noreturn]] void throwTooMany(std::int64_t maxItemsets, std::int64_t minCount, std::int64_t transactions) {
  throw Error(Error::Kind::kLimit, "more than " + std::to_string(maxItemsets) + " itemsets are in " +
                                       std::to_string(minCount) + " of " + std::to_string(transactions) +
                                       " transactions");
}

}  // namespace

Model mine(const Baskets& baskets, const MiningOptions& options) {
  check(baskets, options);
  const std::int64_t transactions = baskets.transactions();
  const std::int64_t minCount = options.minSupport.leastCount(transactions);
  Model::Parts parts{ItemsetTable(), transactions, options.minSupport, baskets.labels()};
  parts.longestItemset = static_cast<std::size_t>(options.longestItemset);
  if (minCount > transactions) return Model::fromItemsets(std::move(parts));

  detail::RunWatch runWatch(options, transactions);
  CompletePass::Watch watch{[&runWatch] { return runWatch.hasToEnd(); },
                            [&runWatch](int read) { runWatch.onRead(read); }};
  if (options.onProgress) watch.itemsetsBetweenCalls = kItemsetsBetweenReports;
  watch.onFound = [&runWatch](int itemsets) { runWatch.onFound(itemsets); };
  detail::BasketSource source(baskets);
  const std::int64_t maxItemsets =
      std::min<std::int64_t>(options.maxItemsets.value_or(kMostTransactions), kMostTransactions);
  const double share = static_cast<double>(minCount) / static_cast<double>(transactions);
  CompletePass pass(source, {share, options.longestItemset, static_cast<int>(maxItemsets), kIndexBytes},
                    watch);
  switch (pass.run()) {
    case CompletePass::Outcome::kCancelled:
      runWatch.throwReason();
    case CompletePass::Outcome::kTooManySets:
      throwTooMany(maxItemsets, minCount, transactions);
    case CompletePass::Outcome::kNotRestarted:
      throw Error(Error::Kind::kInternal, "the baskets could not be read again");
    case CompletePass::Outcome::kDone:
      break;
  }
  parts.itemsets = tableOf(pass.takeItemsets());
  return Model::fromItemsets(std::move(parts));
}

}  // namespace korassoc
