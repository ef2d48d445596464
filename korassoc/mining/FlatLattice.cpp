#include "korassoc/mining/FlatLattice.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "korassoc/mining/RuleOrder.h"

namespace korassoc::detail {

FlatLattice::FlatLattice(ItemsetTable itemsets, std::int64_t transactions) : itemsets_(std::move(itemsets)) {
  counts_.reserve(itemsets_.size() + 1);
  counts_.push_back(transactions);
  counts_.insert(counts_.end(), itemsets_.counts().begin(), itemsets_.counts().end());
  divideIntoLevels();
  down_.resize(itemsets_.items().size(), 0);
  prefixesLinked_ = linkPrefixes();
  if (prefixesLinked_) {
    regular_ = linkDownByNeighbours() && countsFall();
  } else {
    linkDownBySearch();
  }
  // Where nothing is missing, the sets of one item have all items.
  const std::size_t singles = longest() == 0 ? 0 : levelBegin(2) - levelBegin(1);
  ranks_ = ItemRanks(regular_ ? itemsets_.items().first(singles) : itemsets_.items());
}

void FlatLattice::divideIntoLevels() {
  const std::size_t longest = itemsets_.empty() ? 0 : itemsets_.itemsOf(itemsets_.size() - 1).size();
  levelBegins_ = {0};
  placeBegins_ = {0};
  std::size_t row = 0;
  for (std::size_t length = 1; length <= longest; ++length) {
    levelBegins_.push_back(static_cast<Node>(row + 1));
    placeBegins_.push_back(static_cast<std::size_t>(itemsets_.offsets()[row]));
    while (row < itemsets_.size() && itemsets_.itemsOf(row).size() == length) ++row;
  }
  levelBegins_.push_back(size());
  lastItems_.resize(size());
  for (row = 0; row < itemsets_.size(); ++row) lastItems_[row + 1] = itemsets_.itemsOf(row).back();
}

std::size_t FlatLattice::lengthOf(Node node) const {
  const auto end = std::upper_bound(levelBegins_.begin(), levelBegins_.end() - 1, node);
  return static_cast<std::size_t>(end - levelBegins_.begin()) - 1;
}

// --- The tree of prefixes ---

// False when a set is there without its prefix.
bool FlatLattice::linkPrefixes() {
  firstExtensions_.assign(size() + std::size_t{1}, size());
  for (std::size_t length = 1; length <= longest(); ++length) {
    if (!linkPrefixes(length)) return false;
  }
  return true;
}

// Both lengths are in order, so one look at each set finds them together.
bool FlatLattice::linkPrefixes(std::size_t length) {
  Node child = levelBegin(length);
  const Node end = levelBegin(length + 1);
  for (Node parent = levelBegin(length - 1); parent < levelBegin(length); ++parent) {
    firstExtensions_[parent] = child;
    const std::span<const Item> prefix = items(parent, length - 1);
    while (child < end && std::equal(prefix.begin(), prefix.end(), items(child, length).begin())) ++child;
  }
  return child == end;
}

FlatLattice::Node FlatLattice::extension(Node node, std::size_t length, Item item) const {
  if (node == 0 && regular_) {
    const std::uint32_t rank = ranks_.rankOf(item);
    return rank != ItemRanks::kNone ? 1 + rank : kNone;
  }
  if (!prefixesLinked_) {
    const std::span<const Item> path = items(node, length);
    std::vector<Item> extended(path.begin(), path.end());
    extended.push_back(item);
    return search(extended);
  }
  const auto begin = lastItems_.begin() + firstExtensions_[node];
  const auto end = lastItems_.begin() + firstExtensions_[node + 1];
  const auto found = std::lower_bound(begin, end, item);
  return found != end && *found == item ? static_cast<Node>(found - lastItems_.begin()) : kNone;
}

FlatLattice::Node FlatLattice::find(std::span<const Item> items) const {
  if (!prefixesLinked_) return search(items);
  Node node = 0;
  for (std::size_t length = 0; length < items.size() && node != kNone; ++length) {
    node = extension(node, length, items[length]);
  }
  return node;
}

FlatLattice::Node FlatLattice::difference(Node whole, std::size_t wholeLength, Node part,
                                          std::size_t partLength) const {
  const std::span<const Item> all = items(whole, wholeLength);
  const std::span<const Item> without = items(part, partLength);
  if (!prefixesLinked_) {
    std::vector<Item> left;
    std::set_difference(all.begin(), all.end(), without.begin(), without.end(), std::back_inserter(left));
    return search(left);
  }
  Node node = 0;
  std::size_t length = 0;
  auto given = without.begin();
  for (const Item item : all) {
    if (given != without.end() && *given == item) {
      ++given;
    } else if (node = extension(node, length++, item); node == kNone) {
      break;
    }
  }
  return node;
}

FlatLattice::Node FlatLattice::search(std::span<const Item> sought) const {
  const std::size_t length = sought.size();
  if (length == 0) return 0;
  if (length > longest()) return kNone;
  Node begin = levelBegin(length);
  Node end = levelBegin(length + 1);
  while (begin < end) {
    const Node middle = begin + (end - begin) / 2;
    const int order = compareItemsets(items(middle, length), sought);
    if (order == 0) return middle;
    if (order < 0) {
      begin = middle + 1;
    } else {
      end = middle;
    }
  }
  return kNone;
}

// --- Links down ---

// False when a subset is missing.
bool FlatLattice::linkDownByNeighbours() {
  bool complete = true;
  for (std::size_t length = 2; length <= longest(); ++length) {
    for (Node parent = levelBegin(length - 1); parent < levelBegin(length); ++parent) {
      complete = joinNeighbours(parent, length) && complete;
    }
  }
  return complete;
}

// Links the sets of a length that have the parent as their prefix. Without the parent's item i they extend
// the parent's own link i by the same last items.
bool FlatLattice::joinNeighbours(Node parent, std::size_t length) {
  const Node begin = firstExtensions_[parent];
  const Node end = firstExtensions_[parent + 1];
  if (begin == end) return true;
  bool complete = true;
  Node* const links = down_.data() + place(begin, length);
  const std::span<const Node> smaller = down(parent, length - 1);
  for (std::size_t i = 0; i + 1 < length; ++i) {
    Node other = smaller[i] != kNone ? firstExtensions_[smaller[i]] : 0;
    const Node otherEnd = smaller[i] != kNone ? firstExtensions_[smaller[i] + 1] : 0;
    // Where the others are many more, a search for the next one is shorter than a walk to it.
    constexpr Node kSearchWhenLonger = 16;
    const bool searches = (otherEnd - other) / kSearchWhenLonger > end - begin;
    for (Node node = begin; node < end; ++node) {
      const Item sought = lastItems_[node];
      if (searches) {
        const auto from = lastItems_.begin();
        other = static_cast<Node>(std::lower_bound(from + other, from + otherEnd, sought) - from);
      } else {
        while (other < otherEnd && lastItems_[other] < sought) ++other;
      }
      const bool found = other < otherEnd && lastItems_[other] == sought;
      links[(node - begin) * length + i] = found ? other : kNone;
      complete = complete && found;
    }
  }
  for (Node node = begin; node < end; ++node) links[(node - begin) * length + length - 1] = parent;
  return complete;
}

void FlatLattice::linkDownBySearch() {
  std::vector<Item> subset;
  for (std::size_t length = 2; length <= longest(); ++length) {
    for (Node node = levelBegin(length); node < levelBegin(length + 1); ++node) {
      const std::span<const Item> set = items(node, length);
      for (std::size_t i = 0; i < length; ++i) {
        subset.assign(set.begin(), set.end());
        subset.erase(subset.begin() + static_cast<std::ptrdiff_t>(i));
        down_[place(node, length) + i] = search(subset);
      }
    }
  }
}

bool FlatLattice::countsFall() const {
  for (std::size_t length = 1; length <= longest(); ++length) {
    const Node* link = down_.data() + placeBegins_[length];
    for (Node node = levelBegin(length); node < levelBegin(length + 1); ++node) {
      const std::int64_t own = counts_[node];
      for (std::size_t i = 0; i < length; ++i) {
        if (counts_[*link++] < own) return false;
      }
    }
  }
  return true;
}

// --- Links up ---

std::span<const FlatLattice::UpLink> FlatLattice::up(Node node) const {
  const UpLinks& up = up_.get([this] { return makeUpLinks(); });
  return {up.links.data() + up.begins[node], up.begins[node + std::size_t{1}] - up.begins[node]};
}

// The links down, counted and turned round. In the order of the nodes, the supersets of a set come in the
// order of the item that they add.
FlatLattice::UpLinks FlatLattice::makeUpLinks() const {
  UpLinks up;
  up.begins.assign(size() + std::size_t{2}, 0);
  for (const Node node : down_) {
    if (node != kNone) ++up.begins[node + std::size_t{2}];
  }
  for (std::size_t i = 2; i < up.begins.size(); ++i) up.begins[i] += up.begins[i - 1];
  up.links.resize(up.begins.back());
  for (std::size_t length = 1; length <= longest(); ++length) {
    for (Node node = levelBegin(length); node < levelBegin(length + 1); ++node) {
      const std::span<const Node> links = down(node, length);
      const std::span<const Item> set = items(node, length);
      for (std::size_t i = 0; i < length; ++i) {
        if (links[i] != kNone) up.links[up.begins[links[i] + std::size_t{1}]++] = {set[i], node};
      }
    }
  }
  up.begins.pop_back();
  return up;
}

}  // namespace korassoc::detail
