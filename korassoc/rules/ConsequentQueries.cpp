#include "korassoc/rules/ConsequentQueries.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/rules/RuleOrder.h"

using KorAssoc::KorStatus;

namespace korassoc::detail {

namespace {

// What the antecedent's stored subsets say of every other item: by item, the figures of the most confident.
std::map<int, ConsequentDescriptor> bestOfSubsets(const LatticeGraph& graph, const ItemSet& antecedent,
                                                  int n) {
  std::map<int, ConsequentDescriptor> best;
  std::vector<int> queue;
  for (int i = 0; i < antecedent.length(); ++i) {
    const int item = antecedent.getItemAt(i);
    const int node = graph.find(&item, 1);
    if (node != LatticeGraph::kNone && graph.descriptor(node) != nullptr) queue.push_back(node);
  }
  for (std::size_t next = 0; next < queue.size(); ++next) {
    const int node = queue[next];
    const ItemSet& subset = graph.set(node);
    const int last = subset.getItemAt(subset.length() - 1);
    for (const LatticeGraph::UpLink& link : graph.up(node)) {
      const bool isGiven = antecedent.hasItem(link.item);
      if (isGiven && link.item <= last) continue;
      if (link.node == LatticeGraph::kNone) throw std::logic_error("a link of the lattice leads nowhere");
      if (isGiven) {
        queue.push_back(link.node);
        continue;
      }
      const double count = graph.count(link.node);
      const double confidence = count / graph.count(node);
      const auto known = best.find(link.item);
      if (known != best.end() && !(confidence > known->second.getConfidence())) continue;
      const int single = graph.find(&link.item, 1);
      const int itemCount = single != LatticeGraph::kNone ? graph.count(single) : 0;
      const ConsequentDescriptor figures(link.item, count / n, confidence, confidence / itemCount * n);
      best.insert_or_assign(link.item, figures);
    }
  }
  return best;
}

}  // namespace

KorStatus filteredConsequents(SetDictionary& dictionary, RuleFilter filter, int maxItems,
                              std::vector<ConsequentDescriptor>& out, ProgressListener* listener) {
  if (dictionary.getHighestLevel() == 0) return KorStatus(40002, true);
  filter.consequentRequired = &dictionary.emptySet();
  filter.minConsequentLength = 1;
  filter.maxConsequentLength = 1;
  filter.maxRules = std::numeric_limits<int>::max();
  filter.minimalAntecedentsOnly = false;
  std::vector<AssociationRule> rules;
  const KorStatus status = FilteredRuleCreation(dictionary, filter, listener).run(rules);
  if (!status.IsOK()) return status;
  std::set<int> collected;
  for (const AssociationRule& rule : rules) {
    if (maxItems >= 0 && collected.size() >= static_cast<std::size_t>(maxItems)) break;
    const int item = rule.getConsequent().getItemAt(0);
    if (!collected.insert(item).second) continue;
    out.emplace_back(item, rule.getSupport(), rule.getConfidence(), rule.getLift());
  }
  return status;
}

KorStatus consequents(SetDictionary& dictionary, const ItemSet* antecedent, int maxItems,
                      std::vector<ConsequentDescriptor>& out) {
  const int highest = dictionary.getHighestLevel();
  if (highest == 0) return KorStatus(40002, true);
  const int n = std::max(dictionary.getEmptySetCount(), 1);
  const LatticeGraph& graph = dictionary.graph();
  if (antecedent == nullptr) {
    for (int node = graph.levelBegin(1); node < graph.levelBegin(2); ++node) {
      const double support = static_cast<double>(graph.count(node)) / n;
      out.emplace_back(graph.set(node).getItemAt(0), support, support, 1.0);
    }
  } else if (antecedent->length() > 0 && highest >= 2) {
    for (const auto& [item, figures] : bestOfSubsets(graph, *antecedent, n)) out.push_back(figures);
  }
  sortConsequents(out);
  cutTo(out, maxItems);
  return dictionary.currentStatus();
}

}  // namespace korassoc::detail
