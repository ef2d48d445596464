#include "tests/oracle/Rounding.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace oracle {

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;

int plusOne(int value) { return value == std::numeric_limits<int>::max() ? value : value + 1; }

}  // namespace

int toInt(double x) {
  if (std::isnan(x)) return 0;
  if (x >= 2147483647.0) return std::numeric_limits<int>::max();
  if (x <= -2147483648.0) return std::numeric_limits<int>::min();
  return static_cast<int>(x);
}

bool almostEqual(double a, double b, double tolerance) {
  if (a == 0) return b == 0;
  if (b == 0 || (a > 0) != (b > 0)) return false;
  const double larger = std::max(std::fabs(a), std::fabs(b));
  return std::fabs(std::fabs(a) - std::fabs(b)) / larger <= tolerance * kEpsilon;
}

int roundedDown(double x) {
  const int nearest = toInt(x + 0.5);
  return almostEqual(x, nearest, 100.0) ? nearest : toInt(x);
}

int roundedUp(double x) {
  const int nearest = toInt(x + 0.5);
  return almostEqual(x, nearest, 100.0) ? nearest : plusOne(toInt(x));
}

int pruningMinimum(double minCount) {
  const int nearest = toInt(minCount + 0.5);
  if (minCount == 0) return nearest;
  if (nearest == 0 || (nearest > 0) != (minCount > 0)) return plusOne(toInt(minCount));
  const double distance = std::fabs(std::fabs(minCount) - std::fabs(static_cast<double>(nearest)));
  const double larger = std::max(std::fabs(minCount), std::fabs(static_cast<double>(nearest)));
  return distance / larger <= 100 * kEpsilon ? nearest : plusOne(toInt(minCount));
}

}  // namespace oracle
