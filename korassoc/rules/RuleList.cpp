#include "korassoc/rules/RuleList.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "korassoc/rules/RuleOrder.h"

namespace korassoc::detail {

void AntecedentTables::pruneRedundant(const LatticeGraph& graph) {
  std::unordered_map<int, std::size_t> tableOf;  // by node
  for (std::size_t i = 0; i < sets.size(); ++i) tableOf.emplace(sets[i], i);
  const LatticeGraph::LentMarks reached = graph.lendMarks();  // a round for each set
  std::vector<int> kept;
  std::vector<std::size_t> keptBegins{0};
  for (std::size_t i = 0; i < sets.size(); ++i) {
    reached->nextRound();
    if (begins[i] != begins[i + 1]) {
      for (const LatticeGraph::UpLink& link : graph.up(sets[i])) {
        const auto larger = tableOf.find(link.node);
        if (larger == tableOf.end()) continue;
        const std::size_t table = larger->second;
        for (std::size_t j = begins[table]; j < begins[table + 1]; ++j) reached->mark(antecedents[j]);
      }
    }
    for (std::size_t j = begins[i]; j < begins[i + 1]; ++j) {
      if (!reached->isMarked(antecedents[j])) kept.push_back(antecedents[j]);
    }
    keptBegins.push_back(kept.size());
  }
  antecedents.swap(kept);
  begins.swap(keptBegins);
}

ItemSet RuleList::consequentOf(const RuleFigures& rule) const {
  if (rule.consequent != LatticeGraph::kNone) return graph_.set(rule.consequent);
  return ItemSet(graph_.set(rule.whole), graph_.set(rule.antecedent));
}

// Nodes are numbered in the order of their sets.
bool RuleList::setsBefore(const RuleFigures& a, const RuleFigures& b) const {
  if (a.antecedent != b.antecedent) return a.antecedent < b.antecedent;
  if (a.consequent != LatticeGraph::kNone && b.consequent != LatticeGraph::kNone) {
    return a.consequent < b.consequent;
  }
  return consequentOf(a) < consequentOf(b);
}

template <double RuleFigures::*First, double RuleFigures::*Second>
void RuleList::sortBy() {
  std::sort(rules_.begin(), rules_.end(), [this](const RuleFigures& a, const RuleFigures& b) {
    if (const int order = compareFigures(a.*First, b.*First); order != 0) return order < 0;
    if (const int order = compareFigures(a.*Second, b.*Second); order != 0) return order < 0;
    return setsBefore(a, b);
  });
}

void RuleList::sort(char sortBy) {
  switch (sortBy) {
    case 'C':
      this->sortBy<&RuleFigures::confidence, &RuleFigures::support>();
      break;
    case 'S':
      this->sortBy<&RuleFigures::support, &RuleFigures::confidence>();
      break;
    case 'L':
      this->sortBy<&RuleFigures::lift, &RuleFigures::confidence>();
      break;
    default:
      break;
  }
}

void RuleList::moveTo(std::vector<AssociationRule>& out, char sortBy, int maxRules) {
  const bool alone = out.empty();
  if (alone) {
    sort(sortBy);
    cutTo(rules_, maxRules);
  }
  out.reserve(out.size() + rules_.size());
  for (const RuleFigures& rule : rules_) {
    out.emplace_back(ItemSet(graph_.set(rule.antecedent)), consequentOf(rule), rule.support, rule.confidence,
                     rule.lift);
  }
  rules_.clear();
  if (!alone) {
    sortRules(out, sortBy);
    cutTo(out, maxRules);
  }
}

}  // namespace korassoc::detail
