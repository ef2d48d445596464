// What one pass knows of a rule.

#pragma once

namespace korassoc::cli {

// Between which figures those of a rule lie.
struct RuleBounds {
  int leastCount = 0;  // of transactions with both sides
  int largestCount = 0;
  double leastConfidence = 0;
  double largestConfidence = 1;
};

}  // namespace korassoc::cli
