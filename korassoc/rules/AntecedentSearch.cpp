#include "korassoc/rules/AntecedentSearch.h"

#include <cstddef>
#include <span>

namespace korassoc::detail {

AntecedentSearch::AntecedentSearch(SetDictionary& dictionary, const LatticeGraph& graph, Order order)
    : dictionary_(dictionary), graph_(graph), order_(order), marks_(graph.lendMarks()) {}

bool AntecedentSearch::mayGoOn() {
  if (!dictionary_.isRestartFailed()) return true;
  dictionary_.setRulesFlag();
  return false;
}

bool AntecedentSearch::run(int start, const AntecedentFilter& filter, std::vector<int>& found) {
  queue_.clear();
  stack_.clear();
  marks_->nextRound();
  const bool allMayLeave = filter.keeps == nullptr && filter.mayLeave == nullptr;
  push(start, graph_.count(start));
  while (!isDone()) {
    if (!mayGoOn()) return false;
    const int node = pop();
    const std::span<const int> subsets = graph_.down(node);
    const auto length = static_cast<long long>(subsets.size());
    bool minimal = true;
    for (std::size_t i = 0; length > filter.shortest && i < subsets.size(); ++i) {
      const int subset = subsets[i];
      if (subset == LatticeGraph::kNone || (!allMayLeave && !mayLeave(node, i, filter))) continue;
      const int count = graph_.count(subset);
      if (count > filter.highestCount) continue;
      minimal = false;
      if (marks_->mark(subset)) push(subset, count);
    }
    if (filter.minimalOnly && !minimal) continue;
    if (graph_.count(node) >= filter.lowestCount && length <= filter.longest) found.push_back(node);
  }
  return true;
}

bool AntecedentSearch::mayLeave(int node, std::size_t position, const AntecedentFilter& filter) const {
  const int item = graph_.set(node).getItemAt(static_cast<int>(position));
  if (filter.keeps != nullptr && filter.keeps->hasItem(item)) return false;
  return filter.mayLeave == nullptr || filter.mayLeave->hasItem(item);
}

void AntecedentSearch::push(int node, int count) {
  if (order_ == Order::kAny) {
    stack_.push_back(node);
  } else {
    queue_.push(node, count);
  }
}

int AntecedentSearch::pop() {
  if (order_ != Order::kAny) return queue_.pop();
  const int node = stack_.back();
  stack_.pop_back();
  return node;
}

}  // namespace korassoc::detail
