#include "korassoc/itemsets/KorMV.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace {

TEST(KorMV, IsTheMostNegativeFiniteDouble) {
  EXPECT_EQ(KorMV::Missing(), -DBL_MAX);
  EXPECT_EQ(KorMV::gMissingValue, -1.7976931348623157e308);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(KorMV::Missing()), 0xFFEFFFFFFFFFFFFFU);
}

TEST(KorMV, RecognisesItsValueAlone) {
  EXPECT_TRUE(KorMV::IsMissing(-DBL_MAX));
  for (double x : {0.0, DBL_MAX, std::nextafter(-DBL_MAX, 0.0), -std::numeric_limits<double>::infinity(),
                   std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(KorMV::IsMissing(x)) << x;
  }
}

TEST(KorMV, IsAssignedTrivially) { EXPECT_TRUE(std::is_trivially_copy_assignable_v<KorMV>); }

}  // namespace
