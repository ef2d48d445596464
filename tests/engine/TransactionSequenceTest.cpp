#include "korassoc/engine/TransactionSequence.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Transactions = std::vector<std::vector<int>>;

korassoc::detail::TransactionSequence sequenceOf(const Transactions& transactions) {
  korassoc::detail::TransactionSequence sequence;
  for (const std::vector<int>& items : transactions) sequence.add(items);
  return sequence;
}

}  // namespace

TEST(TransactionSequence, IsTheSameForTheSameTransactions) {
  EXPECT_EQ(sequenceOf({}), sequenceOf({}));
  EXPECT_EQ(sequenceOf({{1, 2}, {}, {-3}}), sequenceOf({{1, 2}, {}, {-3}}));
}

TEST(TransactionSequence, TellsWhateverMakesADifferenceToCounts) {
  const Transactions all[] = {
      {},         {{}},       {{}, {}},      {{0}},         {{1}},         {{-1}},
      {{1}, {}},  {{}, {1}},  {{}, {}, {1}}, {{1, 1}},      {{1}, {1}},    {{1, 2}},
      {{1}, {2}}, {{2}, {1}}, {{1, 2}, {3}}, {{1, 3}, {2}}, {{1}, {2, 3}}, {{1, 2, 3}}};
  for (const Transactions& one : all) {
    for (const Transactions& other : all) EXPECT_EQ(sequenceOf(one) == sequenceOf(other), &one == &other);
  }
}
