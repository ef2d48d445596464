// Rules with their counts, in columns.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/ItemsetTable.h"
#include "korassoc/mining/Labels.h"
#include "korassoc/mining/Measure.h"
#include "korassoc/mining/RowIterator.h"

namespace korassoc {

class RuleTable;

namespace detail {
struct RuleColumns;
}

// Between which figures those of a rule lie where counts are bounds.
struct RuleBounds {
  std::int64_t leastCount;  // of transactions with both sides
  std::int64_t largestCount;
  double leastConfidence;
  double largestConfidence;
};

// Lists of items in the layout of an Arrow list column: list i is items[offsets[i] .. offsets[i + 1]).
struct ItemLists {
  std::vector<std::int64_t> offsets = {0};
  std::vector<Item> items;
};

// One rule: a row of a table, valid as long as the table or a copy of it lives.
class KORASSOC_EXPORT RuleView {
 public:
  RuleView(const RuleTable& table, std::size_t row) : table_(&table), row_(row) {}

  // Ascending. No item is on both sides; the antecedent may be empty.
  std::span<const Item> antecedent() const;
  std::span<const Item> consequent() const;
  RuleCounts counts() const;
  // What a measure makes of the counts; a NaN where it is not defined.
  double value(Measure measure) const { return measure.of(counts()); }
  double support() const { return value(Measure::kSupport); }
  double confidence() const { return value(Measure::kConfidence); }
  double lift() const { return value(Measure::kLift); }
  RuleBounds bounds() const;

 private:
  friend KORASSOC_EXPORT std::ostream& operator<<(std::ostream& out, const RuleView& rule);

  const RuleTable* table_;
  std::size_t row_;
};

// "{salsa, sour cream} => {taco shells}  (208 of 241, lift 13.3)": transactions with both sides, of those
// with the antecedent; labels as they are.
KORASSOC_EXPORT std::ostream& operator<<(std::ostream& out, const RuleView& rule);

// RuleTable keeps rules as numbers of itemsets and as counts. Every figure is computed from the counts when
// it is asked for:
//
//   antecedent  consequent    itemsets of the model that both sides are, by number
//   whole counts  antecedent counts  consequent counts        transactions
//
// RuleTable is a value that is cheap to copy: copies share the columns, which never change, and hold the
// model's itemsets and labels. Threads: any number of readers. Memory: 36 bytes a rule.
class KORASSOC_EXPORT RuleTable {
 public:
  // No rules.
  RuleTable();

  std::size_t size() const;
  bool empty() const { return size() == 0; }
  // Requires row < size(), here and below.
  RuleView operator[](std::size_t row) const { return {*this, row}; }
  detail::RowIterator<RuleTable, RuleView> begin() const { return {*this, 0}; }
  detail::RowIterator<RuleTable, RuleView> end() const { return {*this, size()}; }

  std::span<const Item> antecedent(std::size_t row) const;
  std::span<const Item> consequent(std::size_t row) const;
  RuleCounts countsOf(std::size_t row) const;
  RuleBounds boundsOf(std::size_t row) const;

  // All transactions: the first of every rule's counts.
  std::int64_t transactions() const;
  const Labels& labels() const;

  // Columns, valid as long as this or a copy lives. The count of a consequent that the model does not know is
  // 0.
  std::span<const std::int64_t> wholeCounts() const;
  std::span<const std::int64_t> antecedentCounts() const;
  std::span<const std::int64_t> consequentCounts() const;
  // Columns made by the call: a measure of every rule, and the items of each side.
  std::vector<double> values(Measure measure) const;
  ItemLists antecedents() const;
  ItemLists consequents() const;

 private:
  friend struct detail::RuleColumns;
  explicit RuleTable(std::shared_ptr<const detail::RuleColumns> columns) : columns_(std::move(columns)) {}

  std::shared_ptr<const detail::RuleColumns> columns_;  // never null
};

}  // namespace korassoc
