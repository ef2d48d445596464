// The plain engine's queue of candidate sets: a binary heap, the largest count on top.

#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "tests/oracle/PlainTable.h"

namespace oracle {

// A pushed set rises past every parent whose count is lower or equal. To pop, the last set goes to the root
// and sinks past the larger child, the left one on ties, while that child's count is strictly larger.
class PlainQueue {
 public:
  struct Candidate {
    Items set;
    const Counter* counter;
  };

  bool empty() const { return heap_.size() == 1; }

  void push(const Items& set, const Counter* counter) {
    heap_.push_back({set, counter});
    for (std::size_t at = heap_.size() - 1; at > 1 && countAt(at / 2) <= countAt(at); at /= 2) {
      std::swap(heap_[at / 2], heap_[at]);
    }
  }

  Candidate pop() {
    Candidate top = heap_[1];
    heap_[1] = heap_.back();
    heap_.pop_back();
    for (std::size_t at = 1; 2 * at < heap_.size();) {
      std::size_t child = 2 * at;
      if (child + 1 < heap_.size() && countAt(child + 1) > countAt(child)) ++child;
      if (countAt(child) <= countAt(at)) break;
      std::swap(heap_[child], heap_[at]);
      at = child;
    }
    return top;
  }

 private:
  int countAt(std::size_t at) const { return heap_[at].counter->count; }

  std::vector<Candidate> heap_ = std::vector<Candidate>(1);  // the children of at stand at 2 at and 2 at + 1
};

}  // namespace oracle
