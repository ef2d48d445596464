// Itemsets as columns: those of an engine, and an engine of given ones.

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/CompleteItemsets.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/engine/CeilArray.h"
#include "korassoc/engine/ItemsetColumns.h"
#include "korassoc/engine/PhaseIContext.h"
#include "korassoc/engine/PhaseIIContext.h"

using korassoc::ItemsetColumns;
using KorAssoc::KorStatus;
using korassoc::detail::CompleteItemsets;
using korassoc::detail::completes;
using korassoc::detail::kExceptionCode;

namespace {

void require(bool good) {
  if (!good) throw std::invalid_argument("these are no itemsets with counts");
}

bool ascends(std::span<const int> set) {
  return std::adjacent_find(set.begin(), set.end(), [](int a, int b) { return a >= b; }) == set.end();
}

// Throws where the columns do not fit together, or a set is not what the engine's own would be.
void check(const ItemsetColumns& columns, std::size_t longest) {
  require(columns.transactions >= 0 && columns.counts.size() == columns.size() &&
          columns.offsets.front() == 0 &&
          columns.offsets.back() == static_cast<std::int64_t>(columns.items.size()) &&
          std::is_sorted(columns.offsets.begin(), columns.offsets.end()));
  std::vector<std::size_t> rows(columns.size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  for (const std::size_t row : rows) {
    const std::span<const int> set = columns.set(row);
    require(!set.empty() && set.size() <= longest && ascends(set) && columns.counts[row] >= 0 &&
            columns.counts[row] <= columns.transactions);
  }
  std::sort(rows.begin(), rows.end(), [&columns](std::size_t a, std::size_t b) {
    const std::span<const int> one = columns.set(a);
    const std::span<const int> other = columns.set(b);
    return std::lexicographical_compare(one.begin(), one.end(), other.begin(), other.end());
  });
  const auto isSame = [&columns](std::size_t a, std::size_t b) {
    const std::span<const int> one = columns.set(a);
    const std::span<const int> other = columns.set(b);
    return std::equal(one.begin(), one.end(), other.begin(), other.end());
  };
  require(std::adjacent_find(rows.begin(), rows.end(), isSame) == rows.end());
}

CompleteItemsets byLength(const ItemsetColumns& columns) {
  CompleteItemsets itemsets;
  itemsets.transactionCount = columns.transactions;
  for (std::size_t row = 0; row < columns.size(); ++row) {
    const std::span<const int> set = columns.set(row);
    if (itemsets.levels.size() < set.size()) itemsets.levels.resize(set.size());
    korassoc::detail::CompleteLevel& level = itemsets.levels[set.size() - 1];
    level.items.insert(level.items.end(), set.begin(), set.end());
    level.counts.push_back(columns.counts[row]);
  }
  return itemsets;
}

}  // namespace

CarmaAssociationAlgorithm::CarmaAssociationAlgorithm(CarmaSettings* settings, MultiPassTransIter* iterator,
                                                     const ItemsetColumns& itemsets, double support)
    : settings_(settings), iterator_(iterator), state_(&PhaseIContext::instance()) {
  const bool made = completes([&] {
    if (settings_ == nullptr) throw std::invalid_argument("no settings");
    makeDictionary();
    makeCounters();
    check(itemsets, static_cast<std::size_t>(std::max(dictionary_->maxLevel(), 0)));
    dictionary_->adopt(byLength(itemsets));
    ceilings_->add(support);
    currentSupport_ = support;
    transactionsSeen_ = itemsets.transactions;
    core_->restoreTransactions(transactionsSeen_, ceilings_->average());
    changeState(PhaseIIContext::instance());
  });
  if (!made) failRestart();
}

KorStatus CarmaAssociationAlgorithm::GetItemsets(ItemsetColumns& itemsets) const {
  if (dictionary_ == nullptr) return currentStatus_;
  const bool copied = completes([&] {
    ItemsetColumns columns = dictionary_->columns();
    columns.transactions = dictionary_->getEmptySetCount();
    itemsets = std::move(columns);
  });
  return copied ? KorStatus() : KorStatus(kExceptionCode, false);
}

int CarmaAssociationAlgorithm::NumberOfSetsGivenUp() const {
  return dictionary_ ? dictionary_->setsGivenUp() : -1;
}

int CarmaAssociationAlgorithm::NumberOfSetsSpilled() const {
  return dictionary_ ? dictionary_->setsSpilled() : -1;
}
