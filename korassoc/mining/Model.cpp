#include "korassoc/mining/Model.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/mining/Error.h"
#include "korassoc/mining/FlatLattice.h"
#include "korassoc/mining/ItemsetSorter.h"
#include "korassoc/mining/Lazy.h"
#include "korassoc/mining/RuleFinder.h"

namespace korassoc {

using detail::FlatLattice;

struct Model::State {
  Parts parts;
  std::int64_t minCount;
  detail::Lazy<FlatLattice> lattice{};

  const FlatLattice& linked() const {
    return lattice.get([this] { return FlatLattice(parts.itemsets, parts.transactions); });
  }
};

namespace {

[[noreturn]] void refuse(const std::string& sentence) { throw Error(Error::Kind::kInput, sentence); }

std::string named(const ItemsetView& set) {
  std::string text;
  for (const Item item : set.items) text += (text.empty() ? "{" : ", ") + std::to_string(item);
  return "the itemset " + text + "}";
}

void checkCounts(const Model::Parts& parts, std::int64_t minCount) {
  for (const ItemsetView set : parts.itemsets) {
    if (set.count < minCount) {
      refuse(named(set) + " has a count of " + std::to_string(set.count) + ", and the support is " +
             std::to_string(minCount));
    }
    if (set.largestCount > parts.transactions) {
      refuse(named(set) + " has a count of " + std::to_string(set.largestCount) + ", and there are " +
             std::to_string(parts.transactions) + " transactions");
    }
  }
}

void checkLabels(const Model::Parts& parts) {
  if (parts.labels.areNumbers()) return;
  for (const ItemsetView set : parts.itemsets) {
    if (set.items.front() < 0 || static_cast<std::size_t>(set.items.back()) >= parts.labels.size()) {
      refuse(named(set) + " has an item without a label");
    }
  }
}

}  // namespace

Model::Model() : Model(fromItemsets({ItemsetTable(), 0, Support::count(1)})) {}

Model Model::fromItemsets(Parts parts) {
  if (parts.transactions < 0) refuse("there are " + std::to_string(parts.transactions) + " transactions");
  const std::int64_t minCount = parts.minSupport.leastCount(parts.transactions);
  checkCounts(parts, minCount);
  checkLabels(parts);
  parts.itemsets = detail::ItemsetSorter::sorted(parts.itemsets);
  return Model(std::shared_ptr<const State>(new State{std::move(parts), minCount}));
}

std::int64_t Model::transactions() const { return state_->parts.transactions; }
Support Model::minSupport() const { return state_->parts.minSupport; }
std::int64_t Model::minCount() const { return state_->minCount; }
Guarantee Model::guarantee() const { return state_->parts.guarantee; }
std::size_t Model::longestItemset() const { return state_->parts.longestItemset; }
const Labels& Model::labels() const { return state_->parts.labels; }
const ItemsetTable& Model::itemsets() const { return state_->parts.itemsets; }

std::optional<std::int64_t> Model::countOf(std::span<const Item> items) const {
  std::vector<Item> sorted(items.begin(), items.end());
  std::sort(sorted.begin(), sorted.end());
  const FlatLattice& lattice = state_->linked();
  const FlatLattice::Node node = lattice.find(sorted);
  if (node == FlatLattice::kNone) return std::nullopt;
  return lattice.count(node);
}

RuleTable Model::rules(const RuleQuery& query) const {
  checkRuleQuery(query);
  const std::int64_t all = transactions();
  const std::int64_t least = query.minSupport ? query.minSupport->leastCount(all) : minCount();
  const std::int64_t largest = query.maxSupport ? query.maxSupport->largestCount(all) : all;
  if (least < minCount()) {
    refuse("rules in " + std::to_string(least) +
           " transactions are asked for, and the model has itemsets in " + std::to_string(minCount()) +
           " or more");
  }
  if (query.maxSupport && largest < least) {
    refuse("rules in at most " + std::to_string(largest) + " of " + std::to_string(all) +
           " transactions are asked for, and in at least " + std::to_string(least));
  }
  return detail::RuleFinder(state_->linked(), query, least, largest).run(labels());
}

}  // namespace korassoc
