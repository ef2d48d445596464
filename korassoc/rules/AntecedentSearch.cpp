#include "korassoc/rules/AntecedentSearch.h"

#include <cstddef>
#include <span>

namespace korassoc::detail {

AntecedentSearch::AntecedentSearch(SetDictionary& dictionary, const LatticeGraph& graph)
    : dictionary_(dictionary), graph_(graph), visited_(static_cast<std::size_t>(graph.size()), 0) {}

bool AntecedentSearch::run(int start, const AntecedentFilter& filter, std::vector<int>& found) {
  queue_.clear();
  ++search_;
  queue_.push(start, graph_.count(start));
  while (!queue_.empty()) {
    if (dictionary_.isRestartFailed()) {
      dictionary_.setRulesFlag();
      return false;
    }
    const int node = queue_.pop();
    visited_[static_cast<std::size_t>(node)] = search_;
    const ItemSet& set = graph_.set(node);
    const std::span<const int> subsets = graph_.down(node);
    bool minimal = true;
    for (std::size_t i = 0; set.length() > filter.shortest && i < subsets.size(); ++i) {
      const int item = set.getItemAt(static_cast<int>(i));
      if (filter.keeps != nullptr && filter.keeps->hasItem(item)) continue;
      if (filter.mayLeave != nullptr && !filter.mayLeave->hasItem(item)) continue;
      const int subset = subsets[i];
      if (subset == LatticeGraph::kNone || graph_.count(subset) > filter.highestCount) continue;
      minimal = false;
      int& visitedBy = visited_[static_cast<std::size_t>(subset)];
      if (visitedBy == search_) continue;
      visitedBy = search_;
      queue_.push(subset, graph_.count(subset));
    }
    if (filter.minimalOnly && !minimal) continue;
    if (graph_.count(node) >= filter.lowestCount && set.length() <= filter.longest) found.push_back(node);
  }
  return true;
}

}  // namespace korassoc::detail
