#include "korassoc/itemsets/KorPower.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "korassoc/itemsets/KorMV.h"

namespace KorAssocMath {
namespace {

constexpr double kEpsilon = 2.220446049250313e-16;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(KorPower, KnowsItsLimits) {
  EXPECT_EQ(KorPower::MaxExp(), 709.0);
  EXPECT_EQ(KorPower::MinExp(), -708.39);
  EXPECT_EQ(KorPower::MaxInt(), 2147483647);
  EXPECT_EQ(KorPower::MEpsilon(), kEpsilon);
}

TEST(KorPower, NumbersItsStatusesFrom0To7) {
  EXPECT_EQ(KorPower::PowerOK, 0);
  EXPECT_EQ(KorPower::PowerUnderflow, 1);
  EXPECT_EQ(KorPower::PowerOverflow, 2);
  EXPECT_EQ(KorPower::PowerNegativeBaseOverflow, 3);
  EXPECT_EQ(KorPower::PowerNegativeBaseBadExponent, 4);
  EXPECT_EQ(KorPower::PowerNegativeBaseZeroExponent, 5);
  EXPECT_EQ(KorPower::PowerZeroBaseNegativeExponent, 6);
  EXPECT_EQ(KorPower::PowerZeroBaseZeroExponent, 7);
}

TEST(KorPower, LimitsOfTheExponentialAreThemselvesAllowed) {
  EXPECT_FALSE(KorPower::ExpOverflow(709.0));
  EXPECT_TRUE(KorPower::ExpOverflow(std::nextafter(709.0, 710.0)));
  EXPECT_FALSE(KorPower::ExpUnderflow(-708.39));
  EXPECT_TRUE(KorPower::ExpUnderflow(std::nextafter(-708.39, -709.0)));
}

TEST(KorPower, TellsIntegersEvenAndOdd) {
  struct Case {
    double x;
    bool integer, even, odd;
  };
  const Case cases[] = {{0.0, true, true, false},
                        {1.0, true, false, true},
                        {2.0, true, true, false},
                        {0.5, false, false, false},
                        {2.0000000000000004, false, false, false},
                        {-1.0, true, false, true},
                        {-2.0, true, true, false},
                        {-0.5, false, false, false},
                        {2147483646.0, true, true, false},
                        {2147483647.0, true, false, true},
                        {2147483648.0, false, false, false},
                        {3e9, false, false, false},  // above the maximum integer
                        {-3e9, true, true, false},   // no lower bound
                        {-3000000001.0, true, false, true},
                        {kInfinity, false, false, false},
                        {kNaN, false, false, false}};
  for (const Case& c : cases) {
    EXPECT_EQ(KorPower::IsInteger(c.x), c.integer) << c.x;
    EXPECT_EQ(KorPower::IsEvenInteger(c.x), c.even) << c.x;
    EXPECT_EQ(KorPower::IsOddInteger(c.x), c.odd) << c.x;
  }
}

TEST(KorPower, AlmostEqualCountsInMachineEpsilonsOfTheLarger) {
  struct Case {
    double a, b, tolerance;
    bool equal;
  };
  const Case cases[] = {{1.0, 1.0 + kEpsilon, 1.0, true},
                        {1.0, 1.0 + 2 * kEpsilon, 1.0, false},
                        {1.0, -1.0, 1e300, false},
                        {0.0, 0.0, 0.0, true},
                        {0.0, -0.0, 0.0, true},
                        {0.0, 5e-324, 1e300, false},
                        {5e-324, 0.0, 1e300, false},
                        {3.0, 3.0, 0.0, true},
                        {-3.0, -3.0, 0.0, true},
                        {1.0, 1.0 - 100 * kEpsilon, 100.0, true},
                        {1.0, 1.0 - 101 * kEpsilon, 100.0, false},
                        // 1e16 and its neighbour 1e16 + 2 differ by 0.9 epsilons of the larger
                        {1e16, 1e16 + 2, 1.0, true},
                        {1e16, 1e16 + 4, 1.0, false},
                        // magnitudes whose product underflows still have signs
                        {1e-200, -1e-200, 100.0, false},
                        {-1e-200, -1e-200, 100.0, true},
                        {kInfinity, kInfinity, 100.0, false},
                        {kNaN, 1.0, 100.0, false},
                        {1.0, kNaN, 100.0, false}};
  for (const Case& c : cases) {
    EXPECT_EQ(KorPower::AlmostEqual(c.a, c.b, c.tolerance), c.equal) << c.a << " " << c.b;
    EXPECT_EQ(KorPower::AlmostEqual(c.b, c.a, c.tolerance), c.equal) << c.b << " " << c.a;
  }
}

TEST(KorPower, TellsReciprocalsOfEvenAndOddIntegers) {
  struct Case {
    double x;
    bool even, odd;
  };
  const Case cases[] = {
      {0.0, false, false},    {1.0, false, true},  {0.5, true, false},   {1.0 / 3.0, false, true},
      {0.25, true, false},    {0.2, false, true},  {-0.5, true, false},  {-1.0 / 3.0, false, true},
      {0.4, false, false},    {2.0, false, false}, {1e10, false, false}, {1.0 / 2147483646.0, true, false},
      {1e-10, false, false},  // its reciprocal is above the maximum integer
      {5e-324, false, false}, {kNaN, false, false}};
  for (const Case& c : cases) {
    EXPECT_EQ(KorPower::IsOneOverEvenInteger(c.x, 32.0), c.even) << c.x;
    EXPECT_EQ(KorPower::IsOneOverOddInteger(c.x, 32.0), c.odd) << c.x;
  }
}

TEST(KorPower, ReciprocalsAllowForTheTolerance) {
  const double nearThird = (1.0 / 3.0) * (1.0 + 64 * kEpsilon);
  EXPECT_FALSE(KorPower::IsOneOverOddInteger(nearThird, 32.0));
  EXPECT_TRUE(KorPower::IsOneOverOddInteger(nearThird, 100.0));
  const double nearHalf = 0.5 * (1.0 + 64 * kEpsilon);
  EXPECT_FALSE(KorPower::IsOneOverEvenInteger(nearHalf, 32.0));
  EXPECT_TRUE(KorPower::IsOneOverEvenInteger(nearHalf, 100.0));
}

TEST(KorPower, ExponentIsGuardedOnBothSides) {
  double result = 1.0;
  EXPECT_EQ(KorPower::Exponent(710.0, result), KorPower::PowerOverflow);
  EXPECT_TRUE(KorMV::IsMissing(result));
  EXPECT_EQ(KorPower::Exponent(-709.0, result), KorPower::PowerUnderflow);
  EXPECT_EQ(result, 0.0);
  EXPECT_EQ(KorPower::Exponent(0.0, result), KorPower::PowerOK);
  EXPECT_EQ(result, 1.0);
  EXPECT_EQ(KorPower::Exponent(1.0, result), KorPower::PowerOK);
  EXPECT_DOUBLE_EQ(result, 2.718281828459045);
  EXPECT_EQ(KorPower::Exponent(709.0, result), KorPower::PowerOK);
  EXPECT_TRUE(std::isfinite(result) && result > 8e307);
  EXPECT_EQ(KorPower::Exponent(-708.39, result), KorPower::PowerOK);
  EXPECT_TRUE(std::isnormal(result));
}

TEST(KorPower, PowerHasAStatusForEveryCase) {
  struct Case {
    double base, exponent;
    KorPower::PowerStatus status;
    double result;
  };
  const double missing = KorMV::Missing();
  const Case cases[] = {
      {-8.0, 1.0 / 3.0, KorPower::PowerOK, -2.0},
      {-8.0, -1.0 / 3.0, KorPower::PowerOK, -0.5},
      {-8.0, 0.5, KorPower::PowerNegativeBaseBadExponent, missing},
      {-8.0, 3e9, KorPower::PowerNegativeBaseBadExponent, missing},
      {-8.0, 0.0, KorPower::PowerNegativeBaseZeroExponent, 1.0},
      {-2.0, 2.0, KorPower::PowerOK, 4.0},
      {-2.0, -2.0, KorPower::PowerOK, 0.25},
      {-2.0, 3.0, KorPower::PowerOK, -8.0},
      {-2.0, -3.0, KorPower::PowerOK, -0.125},
      {-1e10, 101.0, KorPower::PowerNegativeBaseOverflow, missing},
      {-1e10, 100.0, KorPower::PowerOverflow, missing},
      {-1e-10, -101.0, KorPower::PowerOverflow, missing},
      {-1e10, -101.0, KorPower::PowerUnderflow, 0.0},
      {-1e10, -100.0, KorPower::PowerUnderflow, 0.0},
      {0.0, -1.0, KorPower::PowerZeroBaseNegativeExponent, missing},
      {0.0, 0.0, KorPower::PowerZeroBaseZeroExponent, 1.0},
      {0.0, 2.0, KorPower::PowerOK, 0.0},
      {2.0, 0.0, KorPower::PowerOK, 1.0},
      {2.0, 10.0, KorPower::PowerOK, 1024.0},
      {2.0, -1.0, KorPower::PowerOK, 0.5},
      {2.0, 0.5, KorPower::PowerOK, 1.4142135623730951},
      {10.0, 400.0, KorPower::PowerOverflow, missing},
      {10.0, -400.0, KorPower::PowerUnderflow, 0.0},
  };
  for (const Case& c : cases) {
    double result = 12345.0;
    EXPECT_EQ(KorPower::Power(c.base, c.exponent, result), c.status) << c.base << " ^ " << c.exponent;
    EXPECT_NEAR(result / (c.result == 0.0 ? 1.0 : c.result), c.result == 0.0 ? 0.0 : 1.0, 1e-12)
        << c.base << " ^ " << c.exponent;
    EXPECT_EQ(KorMV::IsMissing(result), KorMV::IsMissing(c.result)) << c.base << " ^ " << c.exponent;
  }
}

TEST(KorPower, AnOddPowerThatUnderflowsIsANegativeZero) {
  double result = 1.0;
  KorPower::Power(-1e10, -101.0, result);
  EXPECT_EQ(result, 0.0);
  EXPECT_TRUE(std::signbit(result));
}

TEST(KorPower, MultiplyIsGuardedOnBothSides) {
  EXPECT_TRUE(KorMV::IsMissing(KorPower::Multiply(1e200, 1e200)));
  EXPECT_TRUE(KorMV::IsMissing(KorPower::Multiply(-1e200, 1e200)));  // not negated
  EXPECT_TRUE(KorMV::IsMissing(KorPower::Multiply(-1e200, -1e200)));
  const double small = KorPower::Multiply(1e-200, 1e-200);
  EXPECT_EQ(small, 0.0);
  EXPECT_FALSE(std::signbit(small));
  const double negativeSmall = KorPower::Multiply(-1e-200, 1e-200);
  EXPECT_EQ(negativeSmall, 0.0);
  EXPECT_TRUE(std::signbit(negativeSmall));
}

TEST(KorPower, MultiplyMultiplies) {
  EXPECT_DOUBLE_EQ(KorPower::Multiply(2.0, 3.0), 6.0);
  EXPECT_DOUBLE_EQ(KorPower::Multiply(-2.0, 3.0), -6.0);
  EXPECT_DOUBLE_EQ(KorPower::Multiply(2.0, -3.0), -6.0);
  EXPECT_DOUBLE_EQ(KorPower::Multiply(-2.0, -3.0), 6.0);
  EXPECT_EQ(KorPower::Multiply(0.0, kInfinity), 0.0);
  EXPECT_EQ(KorPower::Multiply(-3.0, 0.0), 0.0);
}

}  // namespace
}  // namespace KorAssocMath
