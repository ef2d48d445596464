#include "korassoc/rules/RuleList.h"

#include <algorithm>
#include <utility>

#include "korassoc/rules/RuleOrder.h"

namespace korassoc::detail {

void AntecedentTables::pruneRedundant(const LatticeGraph& graph) {
  constexpr int kAbsent = -1;
  std::vector<int> tableOf(static_cast<std::size_t>(graph.size()), kAbsent);  // by node
  for (std::size_t i = 0; i < sets.size(); ++i)
    tableOf[static_cast<std::size_t>(sets[i])] = static_cast<int>(i);
  std::vector<int> reachedFrom(static_cast<std::size_t>(graph.size()),
                               kAbsent);  // by node: the last set that drops it
  std::vector<int> kept;
  std::vector<std::size_t> keptBegins{0};
  for (std::size_t i = 0; i < sets.size(); ++i) {
    if (begins[i] != begins[i + 1]) {
      for (const LatticeGraph::UpLink& link : graph.up(sets[i])) {
        if (link.node == LatticeGraph::kNone) continue;
        const int larger = tableOf[static_cast<std::size_t>(link.node)];
        if (larger == kAbsent) continue;
        const auto table = static_cast<std::size_t>(larger);
        for (std::size_t j = begins[table]; j < begins[table + 1]; ++j) {
          reachedFrom[static_cast<std::size_t>(antecedents[j])] = static_cast<int>(i);
        }
      }
    }
    for (std::size_t j = begins[i]; j < begins[i + 1]; ++j) {
      if (reachedFrom[static_cast<std::size_t>(antecedents[j])] != static_cast<int>(i))
        kept.push_back(antecedents[j]);
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

bool RuleList::before(const RuleFigures& a, const RuleFigures& b, char sortBy) const {
  const auto first = [sortBy](const RuleFigures& rule) {
    return sortBy == 'S' ? rule.support : sortBy == 'L' ? rule.lift : rule.confidence;
  };
  const auto second = [sortBy](const RuleFigures& rule) {
    return sortBy == 'C' ? rule.support : rule.confidence;
  };
  if (const int order = compareFigures(first(a), first(b)); order != 0) return order < 0;
  if (const int order = compareFigures(second(a), second(b)); order != 0) return order < 0;
  if (a.antecedent != b.antecedent) return graph_.set(a.antecedent) < graph_.set(b.antecedent);
  if (a.consequent != LatticeGraph::kNone && b.consequent != LatticeGraph::kNone) {
    return a.consequent != b.consequent && graph_.set(a.consequent) < graph_.set(b.consequent);
  }
  return consequentOf(a) < consequentOf(b);
}

void RuleList::moveTo(std::vector<AssociationRule>& out, char sortBy, int maxRules) {
  const bool sorts = sortBy == 'C' || sortBy == 'S' || sortBy == 'L';
  const bool alone = out.empty();
  if (sorts && alone) {
    std::sort(rules_.begin(), rules_.end(),
              [this, sortBy](const RuleFigures& a, const RuleFigures& b) { return before(a, b, sortBy); });
  }
  if (alone) cutTo(rules_, maxRules);
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
