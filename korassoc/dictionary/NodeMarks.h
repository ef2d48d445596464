// Which nodes of a lattice a search has met.

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace korassoc::detail {

// NodeMarks holds a mark for each node. A new round makes all earlier marks old in one step, so a query that
// meets few nodes takes no time for the others:
//
//   round_   4
//   marks_   [ 1 | 4 | 3 | 0 ]      the round in which the node was marked; 0: never
//
// Only the constructor, and once in 2^31 rounds forget(), go through all nodes. Memory: 4 bytes a node.
class NodeMarks {
 public:
  explicit NodeMarks(int nodes) : marks_(static_cast<std::size_t>(nodes), 0U) {}

  // What every query begins with: leaves room for as many rounds as there can be nodes.
  void forget() {
    if (round_ <= kMostRounds) return;
    marks_.assign(marks_.size(), 0U);
    round_ = 0;
  }
  void nextRound() { ++round_; }

  // Marks the node in this round; false when it was marked in it before.
  bool mark(int node) {
    std::uint32_t& mark = marks_[static_cast<std::size_t>(node)];
    if (mark == round_) return false;
    mark = round_;
    return true;
  }
  bool isMarked(int node) const { return marks_[static_cast<std::size_t>(node)] == round_; }

 private:
  static constexpr std::uint32_t kMostRounds = std::numeric_limits<std::uint32_t>::max() / 2;

  std::vector<std::uint32_t> marks_;  // by node
  std::uint32_t round_ = 0;
};

}  // namespace korassoc::detail
