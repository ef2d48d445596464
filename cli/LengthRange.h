// Bounds on how many items a side of a rule has.

#pragma once

#include <limits>
#include <string>
#include <string_view>

namespace korassoc::cli {

// Both bounds are inclusive.
struct LengthRange {
  int shortest = 1;
  int longest = std::numeric_limits<int>::max();

  // "1:3", "2:" (2 or more), ":3" (least to 3), "2" (exactly 2). Bounds below least are refused. option is
  // what messages call it. Throws CliError (kUsage).
  static LengthRange parse(const std::string& option, std::string_view text, int least);

  bool holds(int length) const { return shortest <= length && length <= longest; }
};

}  // namespace korassoc::cli
