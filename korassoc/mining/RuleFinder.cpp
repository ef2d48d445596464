#include "korassoc/mining/RuleFinder.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <span>
#include <utility>

#include "korassoc/itemsets/KorPower.h"
#include "korassoc/mining/Error.h"
#include "korassoc/mining/RuleColumns.h"
#include "korassoc/mining/WholeItemsets.h"

namespace korassoc::detail {
namespace {

constexpr std::int64_t kAnyCount = std::numeric_limits<std::int64_t>::max();

// The largest count of an antecedent with which a set of this count reaches the confidence: the quotient cut
// off, or the integer that it is within rounding.
std::int64_t highestAntecedentCount(std::int64_t count, double minConfidence) {
  constexpr double kRoundingEpsilons = 100.0;
  constexpr double kBeyond = 9e18;
  if (minConfidence <= 0) return kAnyCount;
  const double quotient = static_cast<double>(count) / minConfidence;
  if (quotient >= kBeyond) return kAnyCount;
  const double nearest = std::floor(quotient + 0.5);
  const bool isInteger = KorAssocMath::KorPower::AlmostEqual(quotient, nearest, kRoundingEpsilons);
  return static_cast<std::int64_t>(isInteger ? nearest : quotient);
}

bool needsConsequent(const RuleQuery& query) {
  return (query.orderBy && query.orderBy->info().needsConsequent) ||
         std::any_of(query.bounds.begin(), query.bounds.end(),
                     [](const MeasureBounds& bounds) { return bounds.measure.info().needsConsequent; });
}

bool hasLength(const SideFilter& side, std::size_t length) {
  return side.minLength <= length && length <= side.maxLength;
}

bool isWithin(const RuleCounts& counts, const std::vector<MeasureBounds>& all) {
  return std::all_of(all.begin(), all.end(), [&counts](const MeasureBounds& bounds) {
    const double value = bounds.measure.of(counts);
    return bounds.least <= value && value <= bounds.most;
  });
}

}  // namespace

RuleFinder::RuleFinder(const FlatLattice& lattice, const RuleQuery& query, std::int64_t minCount,
                       std::int64_t maxCount)
    : lattice_(lattice),
      query_(query),
      minCount_(minCount),
      maxCount_(maxCount),
      roles_(lattice.ranks(), query),
      nonRedundant_(query.selection == RuleSelection::kNonRedundant),
      needsConsequent_(needsConsequent(query)),
      finder_(lattice) {
  if (query.orderBy) order_.emplace(*query.orderBy);
}

RuleTable RuleFinder::run(const Labels& labels) {
  if (query_.top == std::size_t{0}) return makeTable(labels);
  if (query_.selection == RuleSelection::kAll || lattice_.isRegular()) {
    if (query_.selection != RuleSelection::kAll) findLargestAbove();
    forEachWhole([this](const Antecedent& whole) {
      findAntecedents(whole);
      emit(whole, antecedents_);
    });
  } else {
    Tables tables;
    forEachWhole([this, &tables](const Antecedent& whole) {
      findAntecedents(whole);
      tables.wholes.push_back(whole);
      std::copy_if(antecedents_.begin(), antecedents_.end(), std::back_inserter(tables.antecedents),
                   [this, &whole](const Antecedent& antecedent) { return mayBeTold(whole, antecedent); });
      tables.begins.push_back(tables.antecedents.size());
    });
    emitUnlessTold(tables);
  }
  return makeTable(labels);
}

// Calls visit(whole) for each itemset that can be split into rules, by node.
template <typename Visit>
void RuleFinder::forEachWhole(Visit&& visit) {
  constexpr std::size_t kSetsBetweenLooks = 1024;
  const std::vector<Node> wholes = WholeItemsets(lattice_, query_, roles_, minCount_, maxCount_).find();
  std::uint32_t length = 0;
  for (std::size_t i = 0; i < wholes.size() && !isFull(); ++i) {
    if (i % kSetsBetweenLooks == 0 && query_.stop.stop_requested()) {
      throw Error(Error::Kind::kCancelled, "the search for rules was stopped");
    }
    while (wholes[i] >= lattice_.levelBegin(length + std::size_t{1})) ++length;
    visit(Antecedent{wholes[i], length});
  }
}

// --- Antecedents ---

// An antecedent X of Z also serves a frequent itemset W, one item larger, exactly when its count is within
// W's bound: X is minimal for W too, since W's bound is not above Z's, and all sets between X and W are
// within W's bound, since their counts are not above X's. So the most frequent W decides.
void RuleFinder::findLargestAbove() {
  largestAbove_.assign(lattice_.size(), 0);
  const std::size_t longest = nonRedundant_ ? lattice_.longest() : WholeItemsets::longestOf(query_, lattice_);
  for (std::size_t length = 1; length <= longest; ++length) {
    for (Node node = lattice_.levelBegin(length); node < lattice_.levelBegin(length + 1); ++node) {
      const std::int64_t count = lattice_.count(node);
      if (count < minCount_) continue;
      const std::span<const Node> down = lattice_.down(node, length);
      const std::span<const Item> items = lattice_.items(node, length);
      for (std::size_t i = 0; i < length; ++i) {
        const bool maySettle = nonRedundant_ || (roles_.of(items[i]) & SideRoles::kConsequent) != 0;
        if (maySettle) largestAbove_[down[i]] = std::max(largestAbove_[down[i]], count);
      }
    }
  }
}

// Puts the antecedents of an itemset into antecedents_, some of which may leave no consequent.
void RuleFinder::findAntecedents(const Antecedent& whole) {
  antecedents_.clear();
  AntecedentBounds bounds;
  bounds.highestCount = highestAntecedentCount(lattice_.count(whole.node), query_.minConfidence);
  bounds.minimalOnly = query_.selection != RuleSelection::kAll;
  removable_.clear();
  if (nonRedundant_ || roles_.areFree()) {
    removable_.resize(whole.length);
    std::iota(removable_.begin(), removable_.end(), 0U);
  }
  if (nonRedundant_) {
    // What no antecedent of this set can pass is known beforehand.
    if (!largestAbove_.empty() && largestAbove_[whole.node] == lattice_.count(whole.node)) return;
    finder_.run(whole.node, whole.length, removable_, bounds, antecedents_);
    return;
  }
  const std::size_t longestConsequent = std::min<std::size_t>(query_.consequent.maxLength, whole.length);
  bounds.shortest = std::max(whole.length - longestConsequent, query_.antecedent.minLength);
  std::size_t length = whole.length;
  highestCount_ = bounds.highestCount;
  const Node start = roles_.areFree() ? whole.node : startOf(whole, length);
  if (start == FlatLattice::kNone || length < bounds.shortest) return;
  finder_.run(start, length, removable_, bounds, antecedents_);
}

// The largest antecedent of an itemset that fits, and its length: without the items that may stand in the
// consequent alone. kNone when it does not reach the confidence. Lists which of its items may leave it.
FlatLattice::Node RuleFinder::startOf(const Antecedent& whole, std::size_t& length) {
  const std::span<const Item> items = lattice_.items(whole.node, whole.length);
  std::vector<Item> kept;
  for (const Item item : items) {
    const SideRoles::Role role = roles_.of(item);
    if (role == SideRoles::kConsequent) continue;
    if (role == SideRoles::kEither) removable_.push_back(static_cast<std::uint32_t>(kept.size()));
    kept.push_back(item);
  }
  if (kept.size() == items.size()) return whole.node;
  length = kept.size();
  const Node start = lattice_.find(kept);
  return start != FlatLattice::kNone && lattice_.count(start) <= highestCount_ ? start : FlatLattice::kNone;
}

// Whether an antecedent counts as one of the itemset where a smaller one asks.
bool RuleFinder::mayBeTold(const Antecedent& whole, const Antecedent& antecedent) const {
  if (nonRedundant_) return antecedent.length < whole.length;
  const double least = static_cast<double>(lattice_.count(whole.node)) / query_.maxConfidence;
  return least <= static_cast<double>(lattice_.count(antecedent.node)) &&
         antecedent.length <= query_.antecedent.maxLength &&
         antecedent.length + query_.consequent.minLength <= whole.length;
}

// Of all antecedents of itemsets, those that no larger one has as well.
void RuleFinder::emitUnlessTold(const Tables& tables) {
  constexpr std::size_t kNoTable = std::numeric_limits<std::size_t>::max();
  std::vector<std::size_t> tableOf(lattice_.size(), kNoTable);
  for (std::size_t i = 0; i < tables.wholes.size(); ++i) tableOf[tables.wholes[i].node] = i;
  std::vector<std::size_t> told(lattice_.size(),
                                kNoTable);  // by node: the last set for which it is redundant
  for (std::size_t i = 0; i < tables.wholes.size() && !isFull(); ++i) {
    for (const FlatLattice::UpLink& link : lattice_.up(tables.wholes[i].node)) {
      const std::size_t larger = tableOf[link.node];
      if (larger == kNoTable) continue;
      for (std::size_t j = tables.begins[larger]; j < tables.begins[larger + 1]; ++j) {
        told[tables.antecedents[j].node] = i;
      }
    }
    antecedents_.clear();
    for (std::size_t j = tables.begins[i]; j < tables.begins[i + 1]; ++j) {
      if (told[tables.antecedents[j].node] != i) antecedents_.push_back(tables.antecedents[j]);
    }
    emit(tables.wholes[i], antecedents_);
  }
}

// --- Rules ---

void RuleFinder::emit(const Antecedent& whole, const std::vector<Antecedent>& antecedents) {
  RuleCounts counts{lattice_.count(0), lattice_.count(whole.node), 0, 0};
  const std::span<const Item> items = lattice_.items(whole.node, whole.length);
  if (antecedents.empty() || counts.whole > maxCount_ || (nonRedundant_ && !roles_.fit(items))) return;
  const double least = static_cast<double>(counts.whole) / query_.maxConfidence;
  const std::int64_t redundantUpTo = highestRedundantCount(whole);
  for (const Antecedent& antecedent : antecedents) {
    const std::size_t rest = whole.length - antecedent.length;
    if (rest == 0 || !hasLength(query_.consequent, rest) ||
        !hasLength(query_.antecedent, antecedent.length)) {
      continue;
    }
    counts.antecedent = lattice_.count(antecedent.node);
    const auto part = static_cast<double>(counts.antecedent);
    const double confidence = static_cast<double>(counts.whole) / part;
    if (!(query_.minConfidence <= confidence && confidence <= query_.maxConfidence && least <= part))
      continue;
    const bool mayGrow = nonRedundant_ || rest < query_.consequent.maxLength;
    if (mayGrow && counts.antecedent <= redundantUpTo) continue;
    if (nonRedundant_ && !roles_.fit(lattice_.items(antecedent.node, antecedent.length), items)) continue;
    if (needsConsequent_) {
      const Node node = lattice_.difference(whole.node, whole.length, antecedent.node, antecedent.length);
      counts.consequent = node != FlatLattice::kNone ? lattice_.count(node) : 0;
    }
    if (!isWithin(counts, query_.bounds)) continue;
    keep({order_ ? order_->keys(counts) : RuleOrder::Keys{0, 0}, antecedent.node, whole.node});
    if (isFull()) return;
  }
}

// Antecedents of an itemset that are counted no more often than this reach a larger consequent, where its
// length allows.
std::int64_t RuleFinder::highestRedundantCount(const Antecedent& whole) const {
  const std::int64_t largest = largestAbove_.empty() ? 0 : largestAbove_[whole.node];
  return largest == 0 ? -1 : highestAntecedentCount(largest, query_.minConfidence);
}

void RuleFinder::keep(const Record& record) {
  if (!order_ || !query_.top || records_.size() < *query_.top) {
    records_.push_back(record);
    if (order_ && query_.top) std::push_heap(records_.begin(), records_.end());
    return;
  }
  if (!(record < records_.front())) return;
  std::pop_heap(records_.begin(), records_.end());
  records_.back() = record;
  std::push_heap(records_.begin(), records_.end());
}

RuleTable RuleFinder::makeTable(const Labels& labels) {
  if (order_) std::sort(records_.begin(), records_.end());
  RuleColumns columns;
  columns.itemsets = lattice_.itemsets();
  columns.labels = labels;
  columns.transactions = lattice_.count(0);
  const std::size_t rules = records_.size();
  for (auto* nodes : {&columns.whole, &columns.antecedent, &columns.consequent}) nodes->reserve(rules);
  for (auto* counts : {&columns.wholeCounts, &columns.antecedentCounts, &columns.consequentCounts}) {
    counts->reserve(rules);
  }
  for (const Record& record : records_) {
    const std::size_t length = lattice_.lengthOf(record.whole);
    const std::size_t antecedentLength = lattice_.lengthOf(record.antecedent);
    Node consequent = lattice_.difference(record.whole, length, record.antecedent, antecedentLength);
    columns.consequentCounts.push_back(consequent != FlatLattice::kNone ? lattice_.count(consequent) : 0);
    if (consequent == FlatLattice::kNone) {
      const std::span<const Item> all = lattice_.items(record.whole, length);
      const std::span<const Item> part = lattice_.items(record.antecedent, antecedentLength);
      consequent = lattice_.size() + static_cast<Node>(columns.others.size());
      std::vector<Item>& rest = columns.others.emplace_back();
      std::set_difference(all.begin(), all.end(), part.begin(), part.end(), std::back_inserter(rest));
    }
    columns.whole.push_back(record.whole);
    columns.antecedent.push_back(record.antecedent);
    columns.consequent.push_back(consequent);
    columns.wholeCounts.push_back(lattice_.count(record.whole));
    columns.antecedentCounts.push_back(lattice_.count(record.antecedent));
  }
  records_ = {};
  return RuleColumns::table(std::move(columns));
}

}  // namespace korassoc::detail
