#include "korassoc/mining/RuleOrder.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

namespace korassoc {

int RuleOrder::compare(const RuleCounts& a, const RuleCounts& b) const {
  const Keys ofA = keys(a);
  const Keys ofB = keys(b);
  return ofA < ofB ? -1 : static_cast<int>(ofB < ofA);
}

// The bits of doubles of one sign are in the order of the doubles, those of negative ones in the opposite
// order. No number has the bits that stand for the figures that are not defined.
std::uint64_t RuleOrder::keyOf(double figure) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  if (std::isnan(figure)) return std::numeric_limits<std::uint64_t>::max();
  const auto bits = std::bit_cast<std::uint64_t>(figure + 0.0);  // adding makes -0.0 the other zero
  const std::uint64_t ascending = (bits & kSign) != 0 ? ~bits : bits | kSign;
  return ~ascending;
}

int compareItemsets(std::span<const Item> a, std::span<const Item> b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  }
  return 0;
}

}  // namespace korassoc
