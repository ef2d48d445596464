#include "korassoc/engine/CandidateTree.h"

#include <algorithm>
#include <limits>
#include <span>

namespace korassoc::detail {

// What the two guides of a walk through the tree share: where they are.
class CandidateTree::Guide {
 public:
  explicit Guide(CandidateTree& tree) : tree_(tree), firstNode_(1, 0) {}

  bool goesOn() {
    if (tree_.cancelled_()) stopped_ = true;
    return !stopped_;
  }
  bool stopped() const { return stopped_; }

 protected:
  // The node of a column of the table of a path of depth items.
  std::size_t nodeOf(std::size_t depth, std::uint32_t column) const { return firstNode_[depth] + column; }
  void setChildren(std::size_t depth, std::size_t firstChild) {
    if (firstNode_.size() < depth + 2) firstNode_.resize(depth + 2);
    firstNode_[depth + 1] = firstChild;
  }

  CandidateTree& tree_;
  bool stopped_ = false;
  std::vector<std::size_t> firstNode_;  // by depth: the node of column 0
};

// Enters every set, even where no row is left: a set that the sample does not have may be counted elsewhere.
class CandidateTree::Grower : public Guide {
 public:
  Grower(CandidateTree& tree, int minCount) : Guide(tree), minCount_(minCount) {}

  int* enter(std::size_t depth, std::uint32_t column, std::size_t /*rows*/) {
    if (tree_.bytes() + column * sizeof(int) > tree_.maxBytes_) stopped_ = true;
    if (stopped_) return nullptr;
    entered_ = nodeOf(depth, column);
    setChildren(depth, tree_.nodes_.size());
    Node& node = tree_.nodes_[entered_];
    node.firstChild = static_cast<std::uint32_t>(tree_.nodes_.size());
    node.firstCounter = static_cast<std::uint32_t>(tree_.counters_.size());
    node.counterCount = column;
    tree_.counters_.resize(tree_.counters_.size() + column, 0);
    return tree_.counters_.data() + node.firstCounter;
  }

  std::uint32_t nextKept(std::size_t depth, std::uint32_t from, std::uint32_t end) {
    Node& node = tree_.nodes_[entered_];
    const int* const counts = tree_.counters_.data() + node.firstCounter;
    while (from < end && counts[from] < minCount_) ++from;
    if (from == end) return end;
    ++node.childCount;
    tree_.nodes_.push_back({tree_.nodes_[nodeOf(depth, from)].rank, from, 0, 0, 0, 0});
    return from;
  }

 private:
  int minCount_;
  std::size_t entered_ = 0;  // node
};

class CandidateTree::Counter : public Guide {
 public:
  using Guide::Guide;

  int* enter(std::size_t depth, std::uint32_t column, std::size_t rows) {
    const Node& node = tree_.nodes_[nodeOf(depth, column)];
    if (rows == 0 || node.counterCount == 0) return nullptr;
    setChildren(depth, node.firstChild);
    child_ = tree_.nodes_.data() + node.firstChild;
    end_ = child_ + node.childCount;
    return tree_.counters_.data() + node.firstCounter;
  }

  std::uint32_t nextKept(std::size_t /*depth*/, std::uint32_t /*from*/, std::uint32_t end) {
    return child_ != end_ && child_->column < end ? (child_++)->column : end;
  }

 private:
  const Node* child_ = nullptr;  // the next one to be kept
  const Node* end_ = nullptr;
};

CandidateTree::CandidateTree(std::size_t maxLength, std::uint64_t maxBytes, const Cancelled& cancelled)
    : maxLength_(maxLength),
      maxBytes_(std::min<std::uint64_t>(maxBytes, std::numeric_limits<std::uint32_t>::max())),
      cancelled_(cancelled) {}

bool CandidateTree::grow(const RankedRows& sample, std::size_t rankCount, int minCount) {
  rankCount_ = rankCount;
  for (std::uint32_t rank = 0; rank < rankCount; ++rank) nodes_.push_back({rank, rank, 0, 0, 0, 0});
  Grower grower(*this, minCount);
  ItemsetWalk<Grower>(grower, maxLength_).walk(sample, 0, rankCount);
  return !grower.stopped() && bytes() <= maxBytes_;
}

bool CandidateTree::count(const RankedRows& block) {
  Counter counter(*this);
  ItemsetWalk<Counter>(counter, maxLength_).walk(block, 0, rankCount_);
  return !counter.stopped();
}

bool CandidateTree::handOnAll(int minCount, ItemsetSink& sink, Part part) const {
  std::vector<std::uint32_t> path;
  for (std::size_t rank = 0; rank < rankCount_; ++rank) {
    path.push_back(nodes_[rank].rank);
    if (!sink.goesOn() || !handOnBelow(nodes_[rank], path, minCount, sink, part)) return false;
    path.pop_back();
  }
  return true;
}

bool CandidateTree::handOnBelow(const Node& node, std::vector<std::uint32_t>& path, int minCount,
                                ItemsetSink& sink, Part part) const {
  const std::span<const Node> children(nodes_.data() + node.firstChild, node.childCount);
  const int* const counts = counters_.data() + node.firstCounter;
  const Node* const siblings = &node - node.counterCount;  // it has a counter for each sibling before it
  auto child = children.begin();
  for (std::uint32_t column = 0; column < node.counterCount; ++column) {
    const bool isChild = child != children.end() && child->column == column;
    if (isChild) ++child;
    if (counts[column] < minCount || isChild != (part == Part::kTree)) continue;
    path.push_back(siblings[column].rank);
    const bool goesOn = sink.take(path.data(), path.size(), counts[column]);
    path.pop_back();
    if (!goesOn) return false;
  }
  for (const Node& next : children) {
    if (counts[next.column] < minCount) continue;
    path.push_back(next.rank);
    if (!handOnBelow(next, path, minCount, sink, part)) return false;
    path.pop_back();
  }
  return true;
}

}  // namespace korassoc::detail
