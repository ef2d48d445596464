// The missing value: what a double holds that has no value.

#pragma once

#include <limits>

#include "korassoc/base/Export.h"

// KorMV names the missing value, the most negative finite double. It is on disk in saved states (bit pattern
// 0xFFEFFFFFFFFFFFFF); never change it.
class KORASSOC_EXPORT KorMV {
 public:
  static constexpr double gMissingValue = std::numeric_limits<double>::lowest();

  static double Missing() { return gMissingValue; }

  // Whether x is exactly the missing value. A NaN is not.
  static bool IsMissing(double x) { return x == gMissingValue; }
};
