#include "korassoc/itemsets/IntStorage.h"

#include <gtest/gtest.h>

#include <climits>
#include <new>

namespace korassoc::detail {
namespace {

TEST(NewInts, GivesTheRoomAskedForAndNoneForNone) {
  const auto three = newInts(3);
  for (std::size_t i = 0; i < 3; ++i) three[i] = 7;  // the address sanitizer says whether the room is there
  EXPECT_EQ(newInts(0), nullptr);
}

TEST(NewInts, RefusesANegativeLength) {
  EXPECT_THROW(newInts(-1), std::bad_array_new_length);
  EXPECT_THROW(newInts(INT_MIN), std::bad_array_new_length);
}

TEST(LengthSum, RefusesWhatNoLengthCanHold) {
  EXPECT_EQ(lengthSum(2, 3), 5);
  EXPECT_EQ(lengthSum(INT_MAX - 1, 1), INT_MAX);
  EXPECT_EQ(lengthSum(0, INT_MAX), INT_MAX);
  EXPECT_THROW(lengthSum(INT_MAX, 1), std::bad_array_new_length);
  EXPECT_THROW(lengthSum(INT_MAX, INT_MAX), std::bad_array_new_length);
}

}  // namespace
}  // namespace korassoc::detail
