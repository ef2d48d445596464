#include "korassoc/rules/ConsequentQueries.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <set>
#include <span>
#include <stdexcept>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/rules/BestConsequents.h"
#include "korassoc/rules/RuleOrder.h"

using KorAssoc::KorStatus;

namespace korassoc::detail {

namespace {

int storedNode(int node) {
  if (node == LatticeGraph::kNone) throw std::logic_error("a link of the lattice leads nowhere");
  return node;
}

bool isRepeated(const ItemSet& set, int position) {
  return position > 0 && set.getItemAt(position - 1) == set.getItemAt(position);
}

// The stored subsets of the antecedent, but the empty one: the shorter first, each once.
std::vector<int> storedSubsets(const LatticeGraph& graph, const ItemSet& antecedent) {
  std::vector<int> subsets;
  for (int i = 0; i < antecedent.length(); ++i) {
    const int item = antecedent.getItemAt(i);
    if (isRepeated(antecedent, i)) continue;
    const int node = graph.find(&item, 1);
    if (node != LatticeGraph::kNone && graph.descriptor(node) != nullptr) subsets.push_back(node);
  }
  for (std::size_t next = 0; next < subsets.size(); ++next) {
    const int node = subsets[next];
    const int last = graph.set(node).getItemAt(graph.length(node) - 1);
    const std::span<const LatticeGraph::UpLink> links = graph.up(node);
    auto link = links.begin();
    for (int i = 0; i < antecedent.length(); ++i) {
      const int item = antecedent.getItemAt(i);
      if (item <= last || isRepeated(antecedent, i)) continue;
      link = std::lower_bound(link, links.end(), item,
                              [](const LatticeGraph::UpLink& l, int sought) { return l.item < sought; });
      if (link != links.end() && link->item == item) subsets.push_back(storedNode(link->node));
    }
  }
  return subsets;
}

// Of the items that follow from the antecedent's stored subsets the best, wanted of them.
std::vector<ConsequentDescriptor> bestOfSubsets(const LatticeGraph& graph, const ItemSet& antecedent, int n,
                                                std::size_t wanted) {
  const std::vector<int> subsets = storedSubsets(graph, antecedent);
  const bool areNumbers =
      std::all_of(subsets.begin(), subsets.end(), [&](int node) { return graph.count(node) > 0; });
  BestConsequents best(areNumbers ? wanted : BestConsequents::kAll);
  const int* const end = antecedent.getTheArray() + antecedent.length();
  for (const int node : subsets) {
    best.beginSubset(graph.count(node));
    const int* given = antecedent.getTheArray();
    for (const LatticeGraph::UpLink& link : graph.up(node)) {
      if (link.count < best.leastCount()) continue;
      while (given != end && *given < link.item) ++given;
      if (given != end && *given == link.item) continue;
      best.offer(link.item, link.count);
    }
    best.endSubset();
  }
  std::vector<ConsequentDescriptor> consequents;
  for (const ItemFigures& figures : best.items()) {
    const int single = graph.find(&figures.item, 1);
    const int itemCount = single != LatticeGraph::kNone ? graph.count(single) : 0;
    consequents.emplace_back(figures.item, static_cast<double>(figures.count) / n, figures.confidence,
                             figures.confidence / itemCount * n);
  }
  return consequents;
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
    const std::size_t wanted = maxItems < 0 ? BestConsequents::kAll : static_cast<std::size_t>(maxItems);
    const std::vector<ConsequentDescriptor> best = bestOfSubsets(graph, *antecedent, n, wanted);
    out.insert(out.end(), best.begin(), best.end());
  }
  sortConsequents(out);
  cutTo(out, maxItems);
  return dictionary.currentStatus();
}

}  // namespace korassoc::detail
