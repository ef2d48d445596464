#include "korassoc/mining/RuleTable.h"

#include <algorithm>
#include <locale>
#include <ostream>
#include <sstream>

#include "korassoc/mining/RuleColumns.h"

namespace korassoc {

using detail::RuleColumns;

namespace {

ItemLists listsOf(const RuleColumns& columns, const std::vector<RuleColumns::Node>& nodes) {
  ItemLists lists;
  std::size_t items = 0;
  for (const RuleColumns::Node node : nodes) items += columns.items(node).size();
  lists.items.reserve(items);
  lists.offsets.reserve(nodes.size() + 1);
  for (const RuleColumns::Node node : nodes) {
    const std::span<const Item> set = columns.items(node);
    lists.items.insert(lists.items.end(), set.begin(), set.end());
    lists.offsets.push_back(static_cast<std::int64_t>(lists.items.size()));
  }
  return lists;
}

}  // namespace

// --- RuleView ---

std::span<const Item> RuleView::antecedent() const { return table_->antecedent(row_); }
std::span<const Item> RuleView::consequent() const { return table_->consequent(row_); }
RuleCounts RuleView::counts() const { return table_->countsOf(row_); }
RuleBounds RuleView::bounds() const { return table_->boundsOf(row_); }

std::ostream& operator<<(std::ostream& out, const RuleView& rule) {
  const Labels& labels = rule.table_->labels();
  const RuleCounts counts = rule.counts();
  std::ostringstream lift;  // whatever the format and the language of out
  lift.imbue(std::locale::classic());
  lift.precision(3);
  lift << rule.lift();
  return out << labels.describe(rule.antecedent()) << " => " << labels.describe(rule.consequent()) << "  ("
             << counts.whole << " of " << counts.antecedent << ", lift " << lift.str() << ")";
}

// --- RuleTable ---

RuleTable::RuleTable() : columns_(std::make_shared<const RuleColumns>()) {}

std::size_t RuleTable::size() const { return columns_->size(); }

std::span<const Item> RuleTable::antecedent(std::size_t row) const {
  return columns_->items(columns_->antecedent[row]);
}

std::span<const Item> RuleTable::consequent(std::size_t row) const {
  return columns_->items(columns_->consequent[row]);
}

RuleCounts RuleTable::countsOf(std::size_t row) const {
  return {columns_->transactions, columns_->wholeCounts[row], columns_->antecedentCounts[row],
          columns_->consequentCounts[row]};
}

RuleBounds RuleTable::boundsOf(std::size_t row) const {
  const std::int64_t all = columns_->transactions;
  const auto largest = [&](RuleColumns::Node node) {
    return node == 0 ? all : std::min(all, columns_->itemsets[node - 1].largestCount);
  };
  const std::int64_t part = columns_->antecedentCounts[row];
  const std::int64_t largestPart = largest(columns_->antecedent[row]);
  RuleBounds bounds{columns_->wholeCounts[row], std::min(largest(columns_->whole[row]), largestPart), 0, 1};
  bounds.leastConfidence = static_cast<double>(bounds.leastCount) / static_cast<double>(largestPart);
  bounds.largestConfidence =
      std::min(1.0, static_cast<double>(bounds.largestCount) / static_cast<double>(part));
  return bounds;
}

std::int64_t RuleTable::transactions() const { return columns_->transactions; }
const Labels& RuleTable::labels() const { return columns_->labels; }

std::span<const std::int64_t> RuleTable::wholeCounts() const { return columns_->wholeCounts; }
std::span<const std::int64_t> RuleTable::antecedentCounts() const { return columns_->antecedentCounts; }
std::span<const std::int64_t> RuleTable::consequentCounts() const { return columns_->consequentCounts; }

std::vector<double> RuleTable::values(Measure measure) const {
  std::vector<double> values(size());
  for (std::size_t row = 0; row < size(); ++row) values[row] = measure.of(countsOf(row));
  return values;
}

ItemLists RuleTable::antecedents() const { return listsOf(*columns_, columns_->antecedent); }
ItemLists RuleTable::consequents() const { return listsOf(*columns_, columns_->consequent); }

}  // namespace korassoc
