#include "korassoc/rules/RuleCreation.h"

#include <cstddef>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/engine/CreateRulesReporter.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/itemsets/CountBound.h"
#include "korassoc/rules/AntecedentSearch.h"
#include "korassoc/rules/ItemDifference.h"

using KorAssoc::KorStatus;

namespace korassoc::detail {

RuleCreation::RuleCreation(SetDictionary& dictionary, double minSupport, double minConfidence,
                           ProgressListener* listener, bool pruneRedundant)
    : dictionary_(dictionary),
      graph_(dictionary.graph()),
      transactionCount_(dictionary.getEmptySetCount()),
      minCount_(countBoundFromFraction(transactionCount_, minSupport)),
      minConfidence_(minConfidence),
      listener_(listener),
      pruneRedundant_(pruneRedundant) {}

KorStatus RuleCreation::run(std::vector<AssociationRule>& out) {
  if (dictionary_.getHighestLevel() == 0) return KorStatus(40002, true);
  const std::vector<int> frequent = numberFrequentSets();
  AntecedentTables tables;
  RuleList rules(graph_);
  const bool found = findAntecedents(frequent, tables);
  if (found) {
    if (pruneRedundant_) tables.pruneRedundant(graph_);
    emit(tables, rules);
  }
  rules.moveTo(out, 'C', -1);
  return found ? dictionary_.currentStatus() : KorStatus(1, false);
}

std::vector<int> RuleCreation::numberFrequentSets() const {
  std::vector<int> frequent;
  const int end = graph_.levelBegin(dictionary_.getHighestLevel() + 1);
  for (int node = 0; node < end; ++node) {
    if (graph_.count(node) < minCount_) continue;
    SetCounter* descriptor = graph_.descriptor(node);
    if (descriptor != nullptr) descriptor->setTID(static_cast<int>(frequent.size()));
    frequent.push_back(node);
  }
  return frequent;
}

bool RuleCreation::findAntecedents(const std::vector<int>& frequent, AntecedentTables& tables) {
  const int interval = dictionary_.settings().GetReportFrequency();
  const auto total = static_cast<int>(frequent.size());
  AntecedentSearch search(dictionary_, graph_);
  AntecedentFilter filter;
  filter.minimalOnly = pruneRedundant_;
  filter.shortest = 0;
  int searched = 0;
  bool goesOn = true;
  while (searched < total) {
    const int whole = frequent[static_cast<std::size_t>(searched)];
    filter.highestCount = antecedentCountBound(graph_.count(whole), minConfidence_);
    // A set without descriptor ends the work as a stop does, but without the flag.
    goesOn = graph_.descriptor(whole) != nullptr && search.run(whole, filter, tables.antecedents);
    if (interval > 0 && searched % interval == 0) report(searched + 1, total);
    if (!goesOn) break;
    tables.close(whole);
    ++searched;
  }
  if (interval <= 0 || searched % interval != 1) report(searched, total);
  return goesOn;
}

void RuleCreation::emit(const AntecedentTables& tables, RuleList& rules) const {
  ItemDifference consequent;
  for (std::size_t i = 0; i < tables.sets.size(); ++i) {
    const int whole = tables.sets[i];
    const double count = graph_.count(whole);
    for (std::size_t j = tables.begins[i]; j < tables.begins[i + 1]; ++j) {
      const int antecedent = tables.antecedents[j];
      consequent.assign(graph_.set(whole), graph_.set(antecedent));
      if (consequent.empty()) continue;
      const int node = graph_.find(consequent.items(), consequent.length());
      const double confidence = count / graph_.count(antecedent);
      const int consequentCount = node != LatticeGraph::kNone ? graph_.count(node) : 0;
      rules.add({whole, antecedent, node, count / transactionCount_, confidence,
                 confidence / consequentCount * transactionCount_});
    }
  }
}

void RuleCreation::report(int bounds, int setTotal) const {
  if (listener_ == nullptr) return;
  CreateRulesReporter reporter(bounds, setTotal);
  listener_->OnProgress(&reporter);
}

}  // namespace korassoc::detail
