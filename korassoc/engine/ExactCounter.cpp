#include "korassoc/engine/ExactCounter.h"

#include <algorithm>
#include <limits>

#include "korassoc/dictionary/SetDictionary.h"

namespace korassoc::detail {

namespace {

constexpr int kEveryTransaction = std::numeric_limits<int>::max();

}  // namespace

void ExactCounter::prepare(const SetDictionary& dictionary, int fromLevel, Counted counted) {
  sets_.clear();
  for (int level = fromLevel; level <= dictionary.storedLevels(); ++level) {
    dictionary.levelTable(level).forEach([&](const HashTable::Entry& entry) {
      if (entry.descriptor == nullptr) return;
      const int last = counted == Counted::kNothing ? kEveryTransaction : entry.descriptor->getTID() - 1;
      sets_.push_back({entry.key->getTheArray(), entry.key->length(), last, entry.descriptor});
    });
  }
  std::sort(sets_.begin(), sets_.end(), [](const Set& a, const Set& b) {
    return std::lexicographical_compare(a.items, a.items + a.length, b.items, b.items + b.length);
  });
  number_ = 0;
  plant();
}

// Makes the tree of the sets that are still to be counted.
void ExactCounter::plant() {
  std::erase_if(sets_, [this](const Set& set) { return set.last <= number_; });
  nodes_.assign(1, Node{0, 0, 0, 0, nullptr});
  build(0, sets_, 0);
  std::vector<int> last;
  for (const Set& set : sets_) last.push_back(set.last);
  std::sort(last.begin(), last.end());
  lastOfHalf_ = last.empty() ? kEveryTransaction : last[last.size() / 2];
  lastOfAll_ = last.empty() ? 0 : last.back();
  if (lastOfHalf_ == kEveryTransaction) sets_ = {};
}

// Gives the node the children that the sets call for: sorted sets that all have the node's path, of depth
// items.
void ExactCounter::build(std::size_t node, std::span<const Set> sets, int depth) {
  const auto position = static_cast<std::size_t>(depth);
  if (!sets.empty() && sets.front().length == depth) {
    nodes_[node].last = sets.front().last;
    nodes_[node].counter = sets.front().counter;
    sets = sets.subspan(1);
  }
  const std::size_t firstChild = nodes_.size();
  std::vector<std::span<const Set>> groups;
  while (!sets.empty()) {
    const int item = sets.front().items[position];
    std::size_t size = 1;
    while (size < sets.size() && sets[size].items[position] == item) ++size;
    groups.push_back(sets.first(size));
    sets = sets.subspan(size);
    nodes_.push_back(Node{item, 0, 0, 0, nullptr});
  }
  nodes_[node].firstChild = static_cast<int>(firstChild);
  nodes_[node].childCount = static_cast<int>(groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i) build(firstChild + i, groups[i], depth + 1);
}

void ExactCounter::count(std::span<const int> items) {
  if (isDone()) return;
  if (number_ >= lastOfHalf_) plant();
  ++number_;
  countChildren(nodes_.front(), items);
}

void ExactCounter::countChildren(const Node& node, std::span<const int> items) {
  constexpr std::size_t kSearchWhenLonger = 8;  // children for each item left
  const std::span<const Node> children(nodes_.data() + node.firstChild,
                                       static_cast<std::size_t>(node.childCount));
  auto child = children.begin();
  const bool search = children.size() > kSearchWhenLonger * items.size();
  for (std::size_t i = 0; i < items.size() && child != children.end(); ++i) {
    const int item = items[i];
    if (search) {
      child = std::lower_bound(child, children.end(), item,
                               [](const Node& c, int sought) { return c.item < sought; });
    } else {
      while (child != children.end() && child->item < item) ++child;
    }
    if (child != children.end() && child->item == item) visit(*child, items.subspan(i + 1));
  }
}

void ExactCounter::visit(const Node& child, std::span<const int> rest) {
  if (number_ <= child.last) child.counter->increment();
  if (child.childCount > 0 && !rest.empty()) countChildren(child, rest);
}

}  // namespace korassoc::detail
