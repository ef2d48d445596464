#include "korassoc/mining/Support.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "korassoc/itemsets/KorPower.h"
#include "korassoc/mining/Error.h"

namespace korassoc {
namespace {

constexpr double kRoundingEpsilons = 100.0;  // the engine's own tolerance for products that are integers

// x, or the integer that it is within rounding.
double withoutRounding(double x) {
  const double nearest = std::floor(x + 0.5);
  return KorAssocMath::KorPower::AlmostEqual(x, nearest, kRoundingEpsilons) ? nearest : x;
}

// A share of the transactions is no more than all of them, which a product of large numbers may round beyond.
std::int64_t within(double count, std::int64_t transactions) {
  if (count >= static_cast<double>(transactions)) return transactions;
  return static_cast<std::int64_t>(count);
}

}  // namespace

Support Support::fraction(double share) {
  if (!(share >= 0 && share <= 1)) {
    throw Error(Error::Kind::kInput, "a support of " + std::to_string(share) + " is no fraction from 0 to 1");
  }
  Support support;
  support.share_ = share;
  return support;
}

Support Support::count(std::int64_t transactions) {
  if (transactions < 0) {
    throw Error(Error::Kind::kInput,
                "a support of " + std::to_string(transactions) + " transactions is below 0");
  }
  Support support;
  support.isCount_ = true;
  support.count_ = transactions;
  return support;
}

double Support::bound(std::int64_t transactions) const {
  return withoutRounding(static_cast<double>(transactions) * share_);
}

std::int64_t Support::leastCount(std::int64_t transactions) const {
  const std::int64_t count = isCount_ ? count_ : within(std::ceil(bound(transactions)), transactions);
  return std::max<std::int64_t>(1, count);
}

std::int64_t Support::largestCount(std::int64_t transactions) const {
  return isCount_ ? count_ : within(std::floor(bound(transactions)), transactions);
}

double Support::shareOf(std::int64_t transactions) const {
  return isCount_ ? static_cast<double>(count_) / static_cast<double>(transactions) : share_;
}

}  // namespace korassoc
