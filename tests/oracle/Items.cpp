#include "tests/oracle/Items.h"

#include <algorithm>
#include <array>

namespace oracle {

namespace {

constexpr std::array<std::uint32_t, 47> kPrimes = {7,   11,  13,  17,  19,  23,  29,  31,  37,  41,  43,  47,
                                                   53,  59,  61,  67,  71,  73,  79,  83,  89,  97,  101, 103,
                                                   107, 109, 113, 127, 131, 137, 139, 149, 151, 157, 163, 167,
                                                   173, 179, 181, 191, 193, 197, 199, 211, 223, 227, 229};

}  // namespace

std::uint32_t hashCode(const Items& items) {
  std::uint32_t hash = 0;
  for (std::size_t i = 0; i < items.size(); ++i)
    hash ^= kPrimes[i % 47] * static_cast<std::uint32_t>(items[i]);
  return hash;
}

Items with(const Items& items, int item) {
  Items result;
  std::size_t i = 0;
  while (i < items.size() && items[i] < item) result.push_back(items[i++]);
  result.push_back(item);
  while (i < items.size()) result.push_back(items[i++]);
  return result;
}

Items without(const Items& items, std::size_t position) {
  Items result;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i != position) result.push_back(items[i]);
  }
  return result;
}

Items difference(const Items& a, const Items& b) {
  Items result;
  for (int item : a) {
    if (std::find(b.begin(), b.end(), item) == b.end()) result.push_back(item);
  }
  return result;
}

bool comesBefore(const Items& a, const Items& b) {
  if (a.size() != b.size()) return a.size() < b.size();
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i]) return a[i] < b[i];
  }
  return false;
}

long long occurrences(const Items& set, const Items& transaction) {
  // For each distinct item, held k times by the set and n times by the transaction: n choose k.
  long long ways = 1;
  for (std::size_t i = 0; i < set.size() && ways > 0;) {
    const auto same = std::equal_range(transaction.begin(), transaction.end(), set[i]);
    const long long n = same.second - same.first;
    long long k = 0;
    for (const int item = set[i]; i < set.size() && set[i] == item; ++i) ++k;
    long long choices = k <= n ? 1 : 0;
    for (long long j = 1; j <= k && choices > 0; ++j) choices = choices * (n - k + j) / j;
    ways *= choices;
  }
  return ways;
}

}  // namespace oracle
