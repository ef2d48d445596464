// The queue in which searches over the lattice visit sets: the most frequent first.

#pragma once

#include <cstddef>
#include <vector>

namespace korassoc::detail {

// A binary max-heap of nodes keyed on their counts (transactions). Its order among equal counts is fixed,
// since the order of visits shows in the order of unsorted rules:
//   push: the new pair rises past every parent whose count is lower or equal;
//   pop:  the last pair is put at the root and sinks past the larger child, the left one of two equal ones,
//         while that child's count is strictly larger.
class CandidateQueue {
 public:
  bool empty() const { return heap_.size() == 1; }
  void push(int node, int count);
  // The node with the largest count. Requires that the queue is not empty.
  int pop();
  void clear() { heap_.resize(1); }

 private:
  struct Pair {
    int node;
    int count;
  };

  std::vector<Pair> heap_{Pair{0, 0}};  // from 1; position 0 is unused
};

}  // namespace korassoc::detail
