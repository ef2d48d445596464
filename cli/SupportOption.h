// A support as people write it: fraction, percentage or count.

#pragma once

#include <string>
#include <string_view>

namespace korassoc::cli {

// SupportOption is a bound on how many transactions hold an itemset: "0.01" or "1%" of all transactions, or
// "25n" for 25 of them. A bare number above 1 could mean two of the three and is refused. So are 0, in all of
// the three, and fractions below 1e-9: every itemset of every transaction reaches those.
class SupportOption {
 public:
  // option is what messages call it ("--support"). Throws CliError (kUsage), showing the three spellings.
  static SupportOption parse(const std::string& option, std::string_view text);

  // As it was written.
  const std::string& text() const { return text_; }

  // The least count that satisfies a minimum of this support: the smallest integer not below
  // transactions * fraction, but 1 at least. A product that is an integer up to rounding counts as it.
  int leastCount(int transactions) const;

  // The fraction of the transactions (at least 1) that it is: as written, or count / transactions, which may
  // be above 1.
  double fractionOf(int transactions) const;

  // The largest count that satisfies a maximum of this support: the largest integer not above
  // transactions * fraction, with the same rule; 0 at least.
  int largestCount(int transactions) const;

 private:
  std::string text_;
  bool isCount_ = false;
  int count_ = 0;
  double fraction_ = 0;

  double exactBound(int transactions) const;
};

}  // namespace korassoc::cli
