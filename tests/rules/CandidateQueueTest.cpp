#include "korassoc/rules/CandidateQueue.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tests/support/Dice.h"

namespace {

using korassoc::detail::CandidateQueue;

// Drains the queue.
std::vector<int> order(CandidateQueue& queue) {
  std::vector<int> nodes;
  while (!queue.empty()) nodes.push_back(queue.pop());
  return nodes;
}

TEST(CandidateQueue, GivesTheMostFrequentFirst) {
  CandidateQueue queue;
  for (const auto& [node, count] : std::vector<std::pair<int, int>>{{1, 5}, {2, 9}, {3, 7}, {4, 1}, {5, 8}}) {
    queue.push(node, count);
  }
  EXPECT_EQ(order(queue), (std::vector<int>{2, 5, 3, 1, 4}));
}

// Three equal pairs: each rises to the root, [1] -> [2 1] -> [3 1 2]. Popping 3 puts 2 at the root, which
// does not sink past the equal 1: [2 1].
TEST(CandidateQueue, LetsEqualPairsRiseButNotSink) {
  CandidateQueue queue;
  queue.push(1, 4);
  queue.push(2, 4);
  queue.push(3, 4);
  EXPECT_EQ(order(queue), (std::vector<int>{3, 2, 1}));
}

// [9a 7b 7c 1d]: popping a puts d at the root; of the equal children the left one, b, rises.
TEST(CandidateQueue, SinksPastTheLeftOfTwoEqualChildren) {
  CandidateQueue queue;
  queue.push(0, 9);
  queue.push(1, 7);
  queue.push(2, 7);
  queue.push(3, 1);
  EXPECT_EQ(order(queue), (std::vector<int>{0, 1, 2, 3}));
}

TEST(CandidateQueue, IsEmptyAfterClear) {
  CandidateQueue queue;
  queue.push(1, 1);
  queue.clear();
  EXPECT_TRUE(queue.empty());
  queue.push(2, 2);
  EXPECT_EQ(order(queue), std::vector<int>{2});
}

// The same rules, written for an array with swaps.
class LiteralHeap {
 public:
  bool empty() const { return pairs_.size() == 1; }
  void push(int node, int count) {
    pairs_.emplace_back(node, count);
    std::size_t place = pairs_.size() - 1;
    while (place > 1 && pairs_[place / 2].second <= pairs_[place].second) {
      std::swap(pairs_[place / 2], pairs_[place]);
      place /= 2;
    }
  }
  int pop() {
    const int top = pairs_[1].first;
    pairs_[1] = pairs_.back();
    pairs_.pop_back();
    std::size_t place = 1;
    while (2 * place < pairs_.size()) {
      std::size_t larger = 2 * place;
      if (larger + 1 < pairs_.size() && pairs_[larger + 1].second > pairs_[larger].second) ++larger;
      if (pairs_[larger].second <= pairs_[place].second) break;
      std::swap(pairs_[larger], pairs_[place]);
      place = larger;
    }
    return top;
  }

 private:
  std::vector<std::pair<int, int>> pairs_{{0, 0}};
};

TEST(CandidateQueue, AgreesWithALiteralHeapOnRandomRuns) {
  Dice dice(7);
  for (int run = 0; run < 300; ++run) {
    CandidateQueue queue;
    LiteralHeap expected;
    const int counts = dice.between(1, 8);  // few: many ties
    for (int step = 0; step < 200; ++step) {
      ASSERT_EQ(queue.empty(), expected.empty());
      if (dice.chance(55) || queue.empty()) {
        const int count = dice.below(counts);
        queue.push(step, count);
        expected.push(step, count);
      } else {
        ASSERT_EQ(queue.pop(), expected.pop()) << "run " << run << ", step " << step;
      }
    }
  }
}

}  // namespace
