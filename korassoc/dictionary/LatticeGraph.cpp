#include "korassoc/dictionary/LatticeGraph.h"

#include <algorithm>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"

namespace korassoc::detail {

LatticeGraph::LatticeGraph(const SetDictionary& dictionary) {
  const int levels = dictionary.storedLevels() + 1;
  indexes_.reserve(static_cast<std::size_t>(levels));
  levelBegins_.push_back(0);
  for (int level = 0; level < levels; ++level) {
    const SubsetIndex& index = indexes_.emplace_back(dictionary.levelTable(level));
    for (int number = 0; number < index.size(); ++number) entries_.push_back(index.entry(number));
    levelBegins_.push_back(size());
  }
  linkDown();
  linkUp();
}

void LatticeGraph::linkDown() {
  downBegins_.reserve(entries_.size() + 1);
  downBegins_.push_back(0);
  for (int level = 0; level < levels(); ++level) {
    for (int node = levelBegin(level); node < levelBegin(level + 1); ++node) {
      const ItemSet& whole = set(node);
      const std::uint64_t hash = setCode(whole.getTheArray(), whole.length());
      for (int omitted = 0; omitted < whole.length(); ++omitted) {
        const int number = indexes_[static_cast<std::size_t>(level - 1)].findWithout(whole, hash, omitted);
        down_.push_back(number != SubsetIndex::kNone ? levelBegin(level - 1) + number : kNone);
      }
      downBegins_.push_back(down_.size());
    }
  }
}

// The links are those of the descriptors' lists; the links down, turned round, tell which nodes they lead to.
void LatticeGraph::linkUp() {
  upBegins_.assign(entries_.size() + 1, 0);
  for (std::size_t node = 0; node < entries_.size(); ++node) {
    const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(entries_[node]->descriptor);
    upBegins_[node + 1] =
        upBegins_[node] + (lattice != nullptr ? static_cast<std::size_t>(lattice->adjacent.count) : 0);
  }
  up_.resize(upBegins_.back());
  for (std::size_t node = 0; node < entries_.size(); ++node) {
    const std::size_t count = upBegins_[node + 1] - upBegins_[node];
    if (count == 0) continue;
    const int* items = static_cast<const LatticeSetDescriptor*>(entries_[node]->descriptor)->adjacent.data;
    for (std::size_t i = 0; i < count; ++i) up_[upBegins_[node] + i] = {items[i], kNone};
  }
  for (int node = 0; node < size(); ++node) {
    const std::span<const int> subsets = down(node);
    for (std::size_t i = 0; i < subsets.size(); ++i) {
      if (subsets[i] == kNone) continue;
      const auto subset = static_cast<std::size_t>(subsets[i]);
      const auto begin = up_.begin() + static_cast<std::ptrdiff_t>(upBegins_[subset]);
      const auto end = up_.begin() + static_cast<std::ptrdiff_t>(upBegins_[subset + 1]);
      const int item = set(node).getItemAt(static_cast<int>(i));
      auto link =
          std::lower_bound(begin, end, item, [](const UpLink& l, int sought) { return l.item < sought; });
      for (; link != end && link->item == item; ++link) link->node = node;
    }
  }
}

int LatticeGraph::find(const int* items, int length) const {
  if (length < 0 || length >= levels()) return kNone;
  const int number = indexes_[static_cast<std::size_t>(length)].find(items, length);
  return number != SubsetIndex::kNone ? levelBegin(length) + number : kNone;
}

}  // namespace korassoc::detail
