#include "korassoc/itemsets/KorPower.h"

#include <cmath>
#include <limits>

#include "korassoc/itemsets/KorMV.h"

namespace KorAssocMath {

namespace {

// The tolerance within which an exponent counts as 1/odd, in machine epsilons.
constexpr double kRootTolerance = 32.0;

bool isWhole(double x) { return std::floor(x) == x; }

// Whether x is an integer up to the tolerance.
bool almostWhole(double x, double tolerance) {
  return KorPower::AlmostEqual(x, std::floor(x + 0.5), tolerance);
}

KorPower::PowerStatus powerOfZero(double exponent, double& result) {
  if (exponent == 0.0) {
    result = 1.0;
    return KorPower::PowerZeroBaseZeroExponent;
  }
  if (exponent > 0.0) {
    result = 0.0;
    return KorPower::PowerOK;
  }
  return KorPower::PowerZeroBaseNegativeExponent;
}

KorPower::PowerStatus powerOfNegative(double base, double exponent, double& result) {
  if (exponent == 0.0) {
    result = 1.0;
    return KorPower::PowerNegativeBaseZeroExponent;
  }
  if (KorPower::IsEvenInteger(exponent)) {
    return KorPower::Exponent(std::log(-base) * exponent, result);
  }
  if (!KorPower::IsOddInteger(exponent) && !KorPower::IsOneOverOddInteger(exponent, kRootTolerance)) {
    return KorPower::PowerNegativeBaseBadExponent;
  }
  const KorPower::PowerStatus status = KorPower::Exponent(std::log(-base) * exponent, result);
  if (KorMV::IsMissing(result)) {
    return exponent > 0.0 ? KorPower::PowerNegativeBaseOverflow : status;
  }
  result = -result;
  return status;
}

}  // namespace

double KorPower::MaxExp() { return 709.0; }

double KorPower::MinExp() { return -708.39; }

int KorPower::MaxInt() { return 2147483647; }

double KorPower::MEpsilon() { return std::numeric_limits<double>::epsilon(); }

bool KorPower::ExpOverflow(double x) { return x > MaxExp(); }

bool KorPower::ExpUnderflow(double x) { return x < MinExp(); }

bool KorPower::IsInteger(double x) { return x <= MaxInt() && isWhole(x); }

bool KorPower::IsEvenInteger(double x) { return IsInteger(x) && isWhole(x * 0.5); }

bool KorPower::IsOddInteger(double x) { return IsInteger(x) && isWhole(x * 0.5 + 0.5); }

bool KorPower::AlmostEqual(double a, double b, double tolerance) {
  if (a == 0.0) {
    return b == 0.0;
  }
  if (b == 0.0 || (a < 0.0) != (b < 0.0)) {
    return false;
  }
  const double difference = std::fabs(a) - std::fabs(b);
  const double larger = difference < 0.0 ? std::fabs(b) : std::fabs(a);
  return std::fabs(difference) / larger <= tolerance * MEpsilon();
}

bool KorPower::IsOneOverEvenInteger(double x, double tolerance) {
  if (x == 0.0) {
    return false;
  }
  const double reciprocal = 1.0 / x;
  return reciprocal <= MaxInt() && almostWhole(reciprocal * 0.5, tolerance);
}

bool KorPower::IsOneOverOddInteger(double x, double tolerance) {
  if (x == 0.0) {
    return false;
  }
  const double reciprocal = 1.0 / x;
  return reciprocal <= MaxInt() && almostWhole(reciprocal * 0.5 + 0.5, tolerance);
}

KorPower::PowerStatus KorPower::Exponent(double x, double& result) {
  if (ExpUnderflow(x)) {
    result = 0.0;
    return PowerUnderflow;
  }
  if (ExpOverflow(x)) {
    result = KorMV::Missing();
    return PowerOverflow;
  }
  result = std::exp(x);
  return PowerOK;
}

KorPower::PowerStatus KorPower::Power(double base, double exponent, double& result) {
  result = KorMV::Missing();
  if (base == 0.0) {
    return powerOfZero(exponent, result);
  }
  if (base < 0.0) {
    return powerOfNegative(base, exponent, result);
  }
  if (exponent == 0.0) {
    result = 1.0;
    return PowerOK;
  }
  return Exponent(std::log(base) * exponent, result);
}

double KorPower::Multiply(double a, double b) {
  if (a == 0.0 || b == 0.0) {
    return 0.0;
  }
  double product = 0.0;
  Exponent(std::log(std::fabs(a)) + std::log(std::fabs(b)), product);
  if ((a < 0.0) != (b < 0.0) && !KorMV::IsMissing(product)) {
    product = -product;
  }
  return product;
}

}  // namespace KorAssocMath
