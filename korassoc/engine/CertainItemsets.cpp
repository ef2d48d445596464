#include "korassoc/engine/CertainItemsets.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace korassoc::detail {

namespace {

// The ways to choose k of m.
double choices(std::size_t m, std::size_t k) {
  if (k > m) return 0;
  double ways = 1;
  for (std::size_t i = 0; i < k; ++i) ways *= static_cast<double>(m - i) / static_cast<double>(i + 1);
  return ways;
}

// The sets of up to most items in which the items' misses add up to no more than the slack, at least. misses
// are ascending.
double choicesWithin(std::span<const int> misses, int slack, std::size_t most) {
  double sets = 0;
  std::size_t within = misses.size();
  for (std::size_t k = 1; k <= std::min(most, within); ++k) {
    const int each = slack / static_cast<int>(k);
    while (within > 0 && misses[within - 1] > each) --within;
    sets += choices(within, k);
  }
  return sets;
}

}  // namespace

double certainItemsets(const RankedRows& rows, std::size_t firstRank, std::size_t endRank,
                       const std::vector<int>& counts, int minCount, std::size_t maxLength, double enough) {
  constexpr std::uint64_t kMostCells = std::uint64_t{1} << 22;  // a few milliseconds
  if (maxLength < 2) return 0;
  double sets = 0;
  std::uint64_t cells = 0;
  std::vector<int> together(endRank, 0);  // by rank
  std::vector<int> misses;
  // Backwards: the least frequent items have the most others before them and the fewest rows.
  for (std::size_t rank = endRank; rank-- > firstRank && sets <= enough && cells < kMostCells;) {
    for (const std::uint32_t occurrence : rows.occurrences(rank)) {
      for (const std::uint32_t* cell = rows.cell(occurrence) - 1; *cell != RankedRows::kRowEnd; --cell) {
        ++together[*cell];
        ++cells;
      }
    }
    misses.clear();
    for (std::size_t other = 0; other < rank; ++other) {
      if (together[other] >= minCount) misses.push_back(counts[rank] - together[other]);
      together[other] = 0;
    }
    cells += rank;
    std::sort(misses.begin(), misses.end());
    sets += choicesWithin(misses, counts[rank] - minCount, maxLength - 1);
  }
  return sets;
}

}  // namespace korassoc::detail
