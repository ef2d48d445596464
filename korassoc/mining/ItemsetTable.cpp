#include "korassoc/mining/ItemsetTable.h"

#include <algorithm>
#include <string>
#include <utility>

#include "korassoc/mining/Error.h"

namespace korassoc {
namespace {

[[noreturn]] void refuse(const std::string& sentence) { throw Error(Error::Kind::kInput, sentence); }

std::string named(std::size_t row) { return "itemset " + std::to_string(row); }

void checkSets(const ItemsetTable::Columns& columns) {
  const std::vector<std::int64_t>& offsets = columns.offsets;
  const auto all = static_cast<std::int64_t>(columns.items.size());
  if (offsets.empty() || offsets.front() != 0 || offsets.back() != all) {
    refuse("the offsets of itemsets do not lead from 0 to " + std::to_string(all) + ", the number of items");
  }
  for (std::size_t row = 0; row + 1 < offsets.size(); ++row) {
    const std::int64_t begin = offsets[row];
    const std::int64_t end = offsets[row + 1];
    if (end <= begin) refuse(named(row) + " has no items");
    if (end > all) refuse(named(row) + " ends at item " + std::to_string(end) + " of " + std::to_string(all));
    const Item* const items = columns.items.data() + begin;
    for (std::int64_t i = 1; i < end - begin; ++i) {
      if (items[i] <= items[i - 1]) refuse("the items of " + named(row) + " do not ascend");
    }
  }
}

void checkCounts(const ItemsetTable::Columns& columns) {
  const std::size_t sets = columns.offsets.size() - 1;
  const std::vector<std::int64_t>& largest = columns.largestCounts;
  if (columns.counts.size() != sets || (!largest.empty() && largest.size() != sets)) {
    refuse("there is not one count for each of " + std::to_string(sets) + " itemsets");
  }
  for (std::size_t row = 0; row < sets; ++row) {
    if (columns.counts[row] < 0) refuse("the count of " + named(row) + " is below 0");
    if (!largest.empty() && largest[row] < columns.counts[row]) {
      refuse("the largest count of " + named(row) + " is below its count");
    }
  }
}

}  // namespace

ItemsetTable::ItemsetTable() : columns_(std::make_shared<const Columns>()) {}

ItemsetTable ItemsetTable::fromColumns(Columns columns) {
  checkSets(columns);
  checkCounts(columns);
  return ItemsetTable(Trusted(), std::move(columns));
}

std::size_t ItemsetTable::longest() const {
  std::int64_t longest = 0;
  for (std::size_t row = 0; row < size(); ++row) {
    longest = std::max(longest, columns_->offsets[row + 1] - columns_->offsets[row]);
  }
  return static_cast<std::size_t>(longest);
}

}  // namespace korassoc
