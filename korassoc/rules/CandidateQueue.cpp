#include "korassoc/rules/CandidateQueue.h"

namespace korassoc::detail {

void CandidateQueue::push(int node, int count) {
  std::size_t place = heap_.size();
  heap_.push_back({node, count});
  for (; place > 1 && heap_[place / 2].count <= count; place /= 2) heap_[place] = heap_[place / 2];
  heap_[place] = {node, count};
}

int CandidateQueue::pop() {
  const int top = heap_[1].node;
  const Pair last = heap_.back();
  heap_.pop_back();
  const std::size_t size = heap_.size();
  if (size == 1) return top;
  std::size_t place = 1;
  for (std::size_t child = 2; child < size; child = 2 * place) {
    if (child + 1 < size && heap_[child + 1].count > heap_[child].count) ++child;
    if (heap_[child].count <= last.count) break;
    heap_[place] = heap_[child];
    place = child;
  }
  heap_[place] = last;
  return top;
}

}  // namespace korassoc::detail
