// Guarded exponentials, powers and products, and comparisons with a tolerance.

#pragma once

#include "korassoc/base/Export.h"

namespace KorAssocMath {

// KorPower computes with doubles so that a result is a finite number or the missing value (KorMV), never an
// infinity. Nothing throws. A NaN argument answers false to a question and gives a NaN or the missing value.
class KORASSOC_EXPORT KorPower {
 public:
  enum PowerStatus {
    PowerOK = 0,                        // also base > 0 with exponent 0, and base 0 with exponent > 0
    PowerUnderflow = 1,                 // the exponential underflowed; the result is 0
    PowerOverflow = 2,                  // the exponential overflowed; the result is missing
    PowerNegativeBaseOverflow = 3,      // negative base, odd exponent > 0, overflow; missing
    PowerNegativeBaseBadExponent = 4,   // negative base, exponent neither an integer nor 1/odd; missing
    PowerNegativeBaseZeroExponent = 5,  // negative base, exponent 0; the result is 1
    PowerZeroBaseNegativeExponent = 6,  // base 0, negative exponent; missing
    PowerZeroBaseZeroExponent = 7       // base 0, exponent 0; the result is 1
  };

  static double MaxExp();    // 709.0, the largest argument given to the exponential
  static double MinExp();    // -708.39, the smallest
  static int MaxInt();       // 2147483647, the upper bound of the integer tests
  static double MEpsilon();  // 2^-52, the unit of the tolerances

  static bool ExpOverflow(double x);   // x > MaxExp()
  static bool ExpUnderflow(double x);  // x < MinExp()

  // Whether x is an integer, an even one, an odd one. Above MaxInt() always false; there is no lower bound.
  static bool IsInteger(double x);
  static bool IsEvenInteger(double x);
  static bool IsOddInteger(double x);

  // Whether a and b differ by at most tolerance machine epsilons of the larger magnitude. 0 equals 0 alone,
  // and numbers of opposite signs are never equal.
  static bool AlmostEqual(double a, double b, double tolerance);

  // Whether 1/x is an even (odd) integer up to the tolerance of AlmostEqual(). False for x = 0 and for 1/x
  // above MaxInt().
  static bool IsOneOverEvenInteger(double x, double tolerance);
  static bool IsOneOverOddInteger(double x, double tolerance);

  // result = e^x. PowerOK, PowerUnderflow (0) or PowerOverflow (missing).
  static PowerStatus Exponent(double x, double& result);

  // result = base^exponent, as e^(exponent * ln|base|). A negative base takes integer exponents and those
  // that are 1/odd up to 32 machine epsilons.
  static PowerStatus Power(double base, double exponent, double& result);

  // a * b, as e^(ln|a| + ln|b|): 0 when it underflows (-0.0 when the signs differ), missing when it
  // overflows.
  static double Multiply(double a, double b);
};

}  // namespace KorAssocMath
