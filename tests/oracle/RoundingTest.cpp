#include "tests/oracle/Rounding.h"

#include <gtest/gtest.h>

#include <limits>

namespace oracle {
namespace {

TEST(OracleRounding, AlmostEqualMeasuresInEpsilons) {
  EXPECT_TRUE(almostEqual(1.0, 1.0 + 2.220446049250313e-16, 1.0));
  EXPECT_FALSE(almostEqual(1.0, 1.0 + 3 * 2.220446049250313e-16, 1.0));
  EXPECT_FALSE(almostEqual(1.0, -1.0, 1e300));
  EXPECT_FALSE(almostEqual(0.0, 1e-300, 100.0));
  EXPECT_FALSE(almostEqual(1e-300, 0.0, 100.0));
  EXPECT_TRUE(almostEqual(0.0, 0.0, 100.0));
}

TEST(OracleRounding, AgreesWithTheHandWorkedTable) {
  struct Case {
    double x;
    int down, up, minimum;
  };
  const Case cases[] = {{0.0, 0, 0, 0},
                        {0.3, 0, 1, 1},
                        {0.7, 0, 1, 1},
                        {2.5, 2, 3, 3},
                        {3.0, 3, 3, 3},
                        {3.0000000000000004, 3, 3, 3},
                        {2.9999999999999996, 3, 3, 3},
                        {3.2, 3, 4, 4},
                        {0.29 * 100, 29, 29, 29},  // 28.999999999999996
                        {-0.2, 0, 1, 1},
                        {-3.2, -3, -2, -2},
                        {2147483647.0, 2147483647, 2147483647, 2147483647},
                        {1e12, 2147483647, 2147483647, 2147483647},
                        {std::numeric_limits<double>::quiet_NaN(), 0, 1, 1}};
  for (const Case& c : cases) {
    EXPECT_EQ(roundedDown(c.x), c.down) << c.x;
    EXPECT_EQ(roundedUp(c.x), c.up) << c.x;
    EXPECT_EQ(pruningMinimum(c.x), c.minimum) << c.x;
  }
}

}  // namespace
}  // namespace oracle
