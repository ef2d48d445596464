#include "korassoc/rules/LatticeSearch.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <utility>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/itemsets/CountBound.h"
#include "korassoc/rules/CandidateQueue.h"

namespace korassoc::detail {

bool LatticeSearch::reports(int node, const SearchBounds& bounds) const {
  return graph_.length(node) >= bounds.minLength && graph_.count(node) <= bounds.maxCount;
}

// A set without descriptor has the count 0, so there is hardly ever anything to look up.
bool LatticeSearch::hasDescriptor(int node) const {
  return graph_.count(node) != 0 || graph_.descriptor(node) != nullptr;
}

// Extends the sets of one length by one item at a time, to the greatest length. Every set is met first from
// all of its subsets of one item less, so each level is complete before it is extended.
std::vector<int> LatticeSearch::climb(std::vector<int> level, std::vector<int> found, const ItemSet* allowed,
                                      const SearchBounds& bounds, const std::set<ItemSet>* skipped) const {
  const LatticeGraph::LentMarks met = graph_.lendMarks();
  std::vector<int> next;
  while (!level.empty()) {
    next.clear();
    for (const int node : level) {
      for (const LatticeGraph::UpLink& link : graph_.up(node)) {
        if (link.node == LatticeGraph::kNone) continue;
        if (allowed != nullptr && !allowed->hasItem(link.item)) continue;
        if (met->mark(link.node) && link.count >= bounds.minCount && hasDescriptor(link.node)) {
          next.push_back(link.node);
        }
      }
    }
    if (skipped != nullptr && !skipped->empty()) {
      std::erase_if(next, [&](int node) { return skipped->count(graph_.set(node)) != 0; });
    }
    for (const int node : next) {
      if (reports(node, bounds)) found.push_back(node);
    }
    if (next.empty() || graph_.length(next.front()) >= bounds.maxLength) break;
    level.swap(next);
  }
  if (order_ == Order::kAsSets) std::sort(found.begin(), found.end());
  return found;
}

std::vector<int> LatticeSearch::supersets(const ItemSet& base, const ItemSet* allowed,
                                          const SearchBounds& bounds,
                                          const std::set<ItemSet>* skipped) const {
  const int node = graph_.find(base);
  if (base.length() > bounds.maxLength || node == LatticeGraph::kNone || graph_.descriptor(node) == nullptr)
    return {};
  const int count = graph_.count(node);
  std::vector<int> found;
  if (bounds.minCount <= count && reports(node, bounds)) found.push_back(node);
  if (count < bounds.minCount || base.length() >= bounds.maxLength) return found;
  return climb({node}, std::move(found), allowed, bounds, skipped);
}

std::vector<int> LatticeSearch::containing(const ItemSet& items, const SearchBounds& bounds,
                                           const std::set<ItemSet>* skipped) const {
  std::vector<int> seeds;
  for (int i = 0; i < items.length(); ++i) {
    const int item = items.getItemAt(i);
    const int node = graph_.find(&item, 1);
    if (node == LatticeGraph::kNone || graph_.descriptor(node) == nullptr) continue;
    if (graph_.count(node) >= bounds.minCount) seeds.push_back(node);
  }
  std::sort(seeds.begin(), seeds.end());
  seeds.erase(std::unique(seeds.begin(), seeds.end()), seeds.end());
  std::vector<int> found;
  std::copy_if(seeds.begin(), seeds.end(), std::back_inserter(found),
               [&](int node) { return reports(node, bounds); });
  if (bounds.maxLength <= 1) seeds.clear();
  return climb(std::move(seeds), std::move(found), nullptr, bounds, skipped);
}

double LatticeSearch::support(const ItemSet& base, int k, int transactionCount) const {
  const int start = graph_.find(base);
  if (start == LatticeGraph::kNone || graph_.descriptor(start) == nullptr || k < 1) return -1.0;
  const LatticeGraph::LentMarks isTaken = graph_.lendMarks();
  CandidateQueue queue;
  queue.push(start, graph_.count(start));
  int lowest = 0;
  int taken = 0;
  while (taken < k && !queue.empty()) {
    const int node = queue.pop();
    lowest = taken == 0 ? graph_.count(node) : std::min(lowest, graph_.count(node));
    ++taken;  // a set that was queued twice counts twice
    isTaken->mark(node);
    for (const LatticeGraph::UpLink& link : graph_.up(node)) {
      if (link.node == LatticeGraph::kNone || !hasDescriptor(link.node)) {
        std::cout << "Bad Counter in findSupport for the set";
        ItemSet(graph_.set(node), link.item).display();
      } else if (!isTaken->isMarked(link.node)) {
        queue.push(link.node, link.count);
      }
    }
  }
  return taken < k ? -1.0 : static_cast<double>(lowest) / transactionCount;
}

std::vector<int> LatticeSearch::maximal(int minCount) const {
  // From the largest sets down: whether a superset reaches the count.
  std::vector<bool> isBelow(static_cast<std::size_t>(graph_.size()), false);
  std::vector<int> found;
  bool hasGaps = false;
  for (int node = graph_.size() - 1; node >= 0; --node) {
    const auto index = static_cast<std::size_t>(node);
    const bool reaches = graph_.count(node) >= minCount;
    if (reaches && !isBelow[index] && (graph_.length(node) > 0 || found.empty())) found.push_back(node);
    if (!reaches && !isBelow[index]) continue;
    for (const int subset : graph_.down(node)) {
      if (subset != LatticeGraph::kNone) {
        isBelow[static_cast<std::size_t>(subset)] = true;
      } else {
        hasGaps = true;
      }
    }
  }
  if (hasGaps) dropSubsets(found);
  return found;
}

// Where a subset is not stored, no chain of links leads through it: the sets have to be compared.
void LatticeSearch::dropSubsets(std::vector<int>& nodes) const {
  const std::vector<int> all = nodes;
  std::erase_if(nodes, [&](int node) {
    return std::any_of(all.begin(), all.end(), [&](int other) {
      return graph_.length(other) > graph_.length(node) && graph_.set(node).isSubsetOf(&graph_.set(other));
    });
  });
}

SemiLattice* filteredCopy(const SetDictionary& dictionary, double minFraction, const ItemSet* leaveOut) {
  const LatticeGraph& graph = dictionary.graph();
  const int empty = graph.find(nullptr, 0);
  const int transactionCount = empty != LatticeGraph::kNone ? graph.count(empty) : 0;
  const int minCount = countBoundFromFraction(transactionCount, minFraction);
  const auto keeps = [&](int node) {
    if (node == LatticeGraph::kNone || graph.descriptor(node) == nullptr) return false;
    if (node == empty) return true;
    return graph.count(node) >= minCount &&
           (leaveOut == nullptr || leaveOut->length() == 0 || !graph.set(node).hasOverlap(leaveOut));
  };
  std::vector<std::unique_ptr<HashTable>> tables;
  int stored = 0;
  for (int level = 0; level < graph.levels(); ++level) {
    std::vector<int> kept;
    for (const int node : graph.tableOrder(level)) {
      if (keeps(node)) kept.push_back(node);
    }
    auto table =
        std::make_unique<HashTable>(std::max(1, saturatingInt(1.5 * static_cast<double>(kept.size()))));
    for (const int node : kept) {
      const SetCounter& source = *graph.descriptor(node);
      auto set = std::make_unique<ItemSet>(graph.set(node));
      auto descriptor =
          std::make_unique<LatticeSetDescriptor>(source.count, source.getTID(), source.getMaxMissed());
      for (const LatticeGraph::UpLink& link : graph.up(node)) {
        if (keeps(link.node)) descriptor->adjacent.Add(link.item);
      }
      table->putNew(set.get(), descriptor.get());
      static_cast<void>(set.release());
      static_cast<void>(descriptor.release());
    }
    stored += static_cast<int>(kept.size());
    tables.push_back(std::move(table));
  }
  return std::make_unique<SetDictionary>(std::move(tables), stored, dictionary.maxLevel(),
                                         dictionary.isBitsetOff())
      .release();
}

}  // namespace korassoc::detail
