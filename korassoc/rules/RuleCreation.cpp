#include "korassoc/rules/RuleCreation.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/engine/CreateRulesReporter.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/itemsets/CountBound.h"
#include "korassoc/rules/Consequent.h"

using KorAssoc::KorStatus;

namespace korassoc::detail {

namespace {

constexpr double kAnyCount = -std::numeric_limits<double>::infinity();

}  // namespace

RuleCreation::RuleCreation(SetDictionary& dictionary, double minSupport, double minConfidence,
                           ProgressListener* listener, bool pruneRedundant)
    : dictionary_(dictionary),
      heldGraph_(dictionary.heldGraph()),
      graph_(*heldGraph_),
      transactionCount_(dictionary.getEmptySetCount()),
      minCount_(countBoundFromFraction(transactionCount_, minSupport)),
      minConfidence_(minConfidence),
      listener_(listener),
      pruneRedundant_(pruneRedundant),
      search_(dictionary, graph_, AntecedentSearch::Order::kAny) {}

KorStatus RuleCreation::run(std::vector<AssociationRule>& out) {
  if (dictionary_.getHighestLevel() == 0) return KorStatus(40002, true);
  const std::vector<int> frequent = numberFrequentSets();
  prunesByCount_ = pruneRedundant_ && countsFall(frequent);
  AntecedentTables tables;
  RuleList rules(graph_);
  const bool found = findAntecedents(frequent, tables);
  if (found) {
    if (pruneRedundant_ && !prunesByCount_) tables.pruneRedundant(graph_);
    emit(tables, rules);
  }
  rules.moveTo(out, 'C', -1);
  return found ? dictionary_.currentStatus() : KorStatus(1, false);
}

// TIDs follow the tables; what comes back follows the nodes, for neighbours have subsets in common.
std::vector<int> RuleCreation::numberFrequentSets() {
  std::vector<int> frequent;
  const int highest = dictionary_.getHighestLevel();
  int number = 0;
  for (int level = 0; level <= highest; ++level) {
    for (const int node : graph_.tableOrder(level)) {
      if (graph_.count(node) < minCount_) continue;
      SetCounter* descriptor = graph_.descriptor(node);
      if (descriptor != nullptr && !dictionary_.isHeld()) descriptor->setTID(number);
      ++number;
    }
  }
  frequent.reserve(static_cast<std::size_t>(number));
  for (int node = 0; node < graph_.levelBegin(highest + 1); ++node) {
    if (graph_.count(node) >= minCount_) frequent.push_back(node);
  }
  return frequent;
}

// Whether every subset of a frequent set is stored and counted at least as often. Exact counts always are so;
// those that phase I leaves need not be.
bool RuleCreation::countsFall(const std::vector<int>& frequent) {
  return std::all_of(frequent.begin(), frequent.end(), [this](int node) {
    const int count = graph_.count(node);
    const std::span<const int> subsets = graph_.down(node);
    return std::all_of(subsets.begin(), subsets.end(), [this, count](int subset) {
      return subset != LatticeGraph::kNone && graph_.count(subset) >= count;
    });
  });
}

bool RuleCreation::findAntecedents(const std::vector<int>& frequent, AntecedentTables& tables) {
  const int interval = dictionary_.settings().GetReportFrequency();
  const auto total = static_cast<int>(frequent.size());
  AntecedentFilter filter;
  filter.minimalOnly = pruneRedundant_;
  int searched = 0;
  bool goesOn = true;
  while (searched < total) {
    const int whole = frequent[static_cast<std::size_t>(searched)];
    // A set without descriptor ends the work as a stop does, but without the flag.
    goesOn = graph_.descriptor(whole) != nullptr && findAntecedentsOf(whole, filter, tables.antecedents);
    if (interval != 0 && searched % interval == 0) report(searched + 1, total, tables);
    goesOn = goesOn && dictionary_.isCurrent(graph_);
    if (!goesOn) break;
    tables.close(whole);
    ++searched;
  }
  if (interval == 0 || searched % interval != 1) report(searched, total, tables);
  return goesOn && dictionary_.isCurrent(graph_);
}

// Where counts fall, an antecedent X of Z also serves a frequent W, one item larger, exactly when count(X) is
// within W's bound: X is minimal for W too, since W's bound is not above Z's, and all sets between X and W
// are within W's bound, since their counts are not above X's. So the antecedents that reach no larger
// consequent are those above the bound of the most frequent W; and where that is Z's own bound, there are
// none.
bool RuleCreation::findAntecedentsOf(int whole, AntecedentFilter& filter, std::vector<int>& antecedents) {
  const int count = graph_.count(whole);
  const std::optional<int> larger = prunesByCount_ ? largerCount(whole) : std::nullopt;
  if (larger && *larger == count) return search_.mayGoOn();
  filter.highestCount = antecedentCountBound(count, minConfidence_);
  filter.lowestCount = kAnyCount;
  if (larger) {
    const int bound = antecedentCountBound(*larger, minConfidence_);
    if (bound >= filter.highestCount) return search_.mayGoOn();
    filter.lowestCount = bound + 1.0;
  }
  const std::size_t begin = antecedents.size();
  const bool goesOn = search_.run(whole, filter, antecedents);
  // The set itself, met first, leaves nothing to the consequent.
  if (antecedents.size() > begin && antecedents[begin] == whole) {
    antecedents[begin] = antecedents.back();
    antecedents.pop_back();
  }
  return goesOn;
}

// The largest count of the frequent sets one item larger, if there are any.
std::optional<int> RuleCreation::largerCount(int whole) {
  std::optional<int> largest;
  for (const LatticeGraph::UpLink& link : graph_.up(whole)) {
    if (link.node == LatticeGraph::kNone) continue;
    if (link.count >= minCount_ && (!largest || link.count > *largest)) largest = link.count;
  }
  return largest;
}

void RuleCreation::emit(const AntecedentTables& tables, RuleList& rules) {
  rules.reserve(tables.antecedents.size());
  Consequent consequent(graph_);
  for (std::size_t i = 0; i < tables.sets.size(); ++i) {
    if (tables.begins[i] == tables.begins[i + 1]) continue;
    const int whole = tables.sets[i];
    const double count = graph_.count(whole);
    consequent.setWhole(whole);
    for (std::size_t j = tables.begins[i]; j < tables.begins[i + 1]; ++j) {
      const int antecedent = tables.antecedents[j];
      consequent.setAntecedent(antecedent);
      if (consequent.length() == 0) continue;
      const int node = consequent.node();
      const double confidence = count / graph_.count(antecedent);
      const int consequentCount = node != LatticeGraph::kNone ? graph_.count(node) : 0;
      rules.add({whole, antecedent, node, count / transactionCount_, confidence,
                 confidence / consequentCount * transactionCount_});
    }
  }
}

void RuleCreation::report(int bounds, int setTotal, const AntecedentTables& tables) const {
  if (listener_ == nullptr) return;
  CreateRulesReporter reporter(bounds, setTotal,
                               saturatingInt(static_cast<double>(tables.antecedents.size())));
  listener_->OnProgress(&reporter);
}

}  // namespace korassoc::detail
