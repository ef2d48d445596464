#include "korassoc/rules/FilteredRuleCreation.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/engine/CreateRulesReporter.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/itemsets/CountBound.h"
#include "korassoc/rules/Consequent.h"
#include "korassoc/rules/LatticeSearch.h"

using KorAssoc::KorStatus;

namespace korassoc::detail {

FilteredRuleCreation::FilteredRuleCreation(SetDictionary& dictionary, const RuleFilter& filter,
                                           ProgressListener* listener)
    : dictionary_(dictionary),
      heldGraph_(dictionary.heldGraph()),
      graph_(*heldGraph_),
      filter_(filter),
      transactionCount_(dictionary.getEmptySetCount()),
      listener_(listener),
      search_(dictionary, graph_,
              sorts() ? AntecedentSearch::Order::kAny : AntecedentSearch::Order::kMostFrequentFirst) {
  if (filter_.antecedentRequired == nullptr) filter_.antecedentRequired = &noItems_;
  if (filter_.consequentRequired == nullptr) filter_.consequentRequired = &noItems_;
}

// Unsorted results show the order in which everything was found.
bool FilteredRuleCreation::sorts() const {
  return filter_.sortBy == 'C' || filter_.sortBy == 'S' || filter_.sortBy == 'L';
}

KorStatus FilteredRuleCreation::run(std::vector<AssociationRule>& out) {
  if (dictionary_.getHighestLevel() == 0) return KorStatus(40002, true);
  AntecedentTables tables;
  RuleList rules(graph_);
  const bool found = findAntecedents(candidates(), tables);
  if (found && !dictionary_.isRestartFailed()) {
    if (filter_.minimalAntecedentsOnly) tables.pruneRedundant(graph_);
    emit(tables, rules);
  }
  rules.moveTo(out, filter_.sortBy, filter_.maxRules);
  return found ? dictionary_.currentStatus() : KorStatus(1, false);
}

// The itemsets that can be split into rules of the filter.
std::vector<int> FilteredRuleCreation::candidates() const {
  const SearchBounds bounds{
      countBoundFromFraction(transactionCount_, filter_.minSupport),
      filteredMaxCountBound(transactionCount_, filter_.minSupport, filter_.maxSupport),
      static_cast<long long>(filter_.minAntecedentLength) + filter_.minConsequentLength,
      static_cast<long long>(filter_.maxAntecedentLength) + filter_.maxConsequentLength};
  const LatticeSearch search(graph_, sorts() ? LatticeSearch::Order::kAny : LatticeSearch::Order::kAsSets);
  const std::unique_ptr<ItemSet> required(filter_.antecedentRequired->setUnion(filter_.consequentRequired));
  const ItemSet* antecedentAllowed = filter_.antecedentAllowed;
  const ItemSet* consequentAllowed = filter_.consequentAllowed;
  if (antecedentAllowed != nullptr && consequentAllowed != nullptr) {
    const std::unique_ptr<ItemSet> allowed(antecedentAllowed->setUnion(consequentAllowed));
    return search.supersets(*required, allowed.get(), bounds);
  }
  if (required->length() == 0 && antecedentAllowed != nullptr)
    return search.containing(*antecedentAllowed, bounds);
  if (required->length() == 0 && consequentAllowed != nullptr)
    return search.containing(*consequentAllowed, bounds);
  return search.supersets(*required, nullptr, bounds);
}

bool FilteredRuleCreation::findAntecedents(const std::vector<int>& candidates, AntecedentTables& tables) {
  const int interval = dictionary_.settings().GetReportFrequency();
  const auto total = static_cast<int>(candidates.size());
  bool goesOn = true;
  for (int i = 0; goesOn && i < total; ++i) {
    const int whole = candidates[static_cast<std::size_t>(i)];
    goesOn = findAntecedentsOf(whole, tables.antecedents);
    if (interval != 0 && i % interval == 0) report(i + 1, total, tables);
    goesOn = goesOn && dictionary_.isCurrent(graph_);
    if (goesOn) tables.close(whole);
  }
  report(total, total, tables);
  return goesOn && dictionary_.isCurrent(graph_);
}

bool FilteredRuleCreation::findAntecedentsOf(int whole, std::vector<int>& antecedents) {
  const int count = graph_.count(whole);
  const long long length = graph_.length(whole);
  AntecedentFilter filter;
  filter.highestCount = antecedentCountBound(count, filter_.minConfidence);
  filter.lowestCount = count / filter_.maxConfidence;
  filter.shortest = std::max<long long>(length - filter_.maxConsequentLength, filter_.minAntecedentLength);
  filter.longest = std::min<long long>(length - filter_.minConsequentLength, filter_.maxAntecedentLength);
  filter.keeps = filter_.antecedentRequired->length() > 0 ? filter_.antecedentRequired : nullptr;
  filter.mayLeave = filter_.consequentAllowed;
  filter.minimalOnly = filter_.minimalAntecedentsOnly;
  const int start = startOf(whole, filter);
  if (start == LatticeGraph::kNone) return true;
  const std::size_t begin = antecedents.size();
  const bool goesOn = search_.run(start, filter, antecedents);
  if (!sorts()) orderAsTable(antecedents, begin);
  return goesOn;
}

// The largest antecedent of an itemset that can be one; kNone when that is none.
int FilteredRuleCreation::startOf(int whole, const AntecedentFilter& filter) {
  if (filter_.consequentRequired->length() == 0 && filter_.antecedentAllowed == nullptr) return whole;
  const ItemSet& set = graph_.set(whole);
  ItemSet start(set, *filter_.consequentRequired);
  if (filter_.antecedentAllowed != nullptr) {
    const std::unique_ptr<ItemSet> allowed(start.intersect(filter_.antecedentAllowed));
    start = *allowed;
  }
  if (start.length() == set.length()) return whole;
  const int node = graph_.find(start);
  if (node == LatticeGraph::kNone || graph_.count(node) > filter.highestCount ||
      start.length() < filter.shortest) {
    return LatticeGraph::kNone;
  }
  const ItemSet left(set, start);
  return left.isSubsetOf(filter_.consequentAllowed) ? node : LatticeGraph::kNone;
}

void FilteredRuleCreation::orderAsTable(std::vector<int>& antecedents, std::size_t begin) const {
  if (antecedents.size() - begin < 2) return;
  // The sets stay the lattice's, also when memory runs out: a table deletes what is in it when it goes.
  struct LentTable : HashTable {
    using HashTable::HashTable;
    ~LentTable() { clear(); }
  } table(dictionary_.settings().GetInitialBoundarySize());
  for (std::size_t i = begin; i < antecedents.size(); ++i) {
    table.put(const_cast<ItemSet*>(&graph_.set(antecedents[i])), nullptr);  // the table does not change it
  }
  std::size_t next = begin;
  table.forEach([&](const HashTable::Entry& entry) { antecedents[next++] = graph_.find(*entry.key); });
}

void FilteredRuleCreation::emit(const AntecedentTables& tables, RuleList& rules) {
  Consequent consequent(graph_);
  for (std::size_t i = 0; i < tables.sets.size(); ++i) {
    if (tables.begins[i] == tables.begins[i + 1]) continue;
    const int whole = tables.sets[i];
    const double count = graph_.count(whole);
    const double support = count / transactionCount_;
    if (!(filter_.minSupport <= support && support <= filter_.maxSupport)) continue;
    consequent.setWhole(whole);
    for (std::size_t j = tables.begins[i]; j < tables.begins[i + 1]; ++j) {
      const int antecedent = tables.antecedents[j];
      if (!isWanted(graph_.set(antecedent))) continue;
      const double confidence = count / graph_.count(antecedent);
      if (!(filter_.minConfidence <= confidence && confidence <= filter_.maxConfidence)) continue;
      consequent.setAntecedent(antecedent);
      if (!isWanted(consequent)) continue;
      const int node = consequent.node();
      const double lift =
          node != LatticeGraph::kNone ? confidence / graph_.count(node) * transactionCount_ : 0.0;
      if (!(lift >= filter_.minLift)) continue;
      rules.add({whole, antecedent, node, support, confidence, lift});
    }
  }
}

bool FilteredRuleCreation::isWanted(const ItemSet& antecedent) const {
  return antecedent.length() >= filter_.minAntecedentLength &&
         antecedent.length() <= filter_.maxAntecedentLength &&
         filter_.antecedentRequired->isSubsetOf(&antecedent) &&
         antecedent.isSubsetOf(filter_.antecedentAllowed);
}

bool FilteredRuleCreation::isWanted(const Consequent& consequent) const {
  const int length = consequent.length();
  if (length == 0 || length < filter_.minConsequentLength || length > filter_.maxConsequentLength)
    return false;
  if (filter_.consequentAllowed == nullptr && filter_.consequentRequired->length() == 0) return true;
  const ItemSet set = consequent.set();
  return set.isSubsetOf(filter_.consequentAllowed) && filter_.consequentRequired->isSubsetOf(&set);
}

void FilteredRuleCreation::report(int bounds, int setTotal, const AntecedentTables& tables) const {
  if (listener_ == nullptr) return;
  CreateRulesReporter reporter(bounds, setTotal,
                               saturatingInt(static_cast<double>(tables.antecedents.size())));
  listener_->OnProgress(&reporter);
}

}  // namespace korassoc::detail
