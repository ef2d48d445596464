#include "korassoc/engine/ItemsetEnumerator.h"

#include <algorithm>

namespace korassoc::detail {

struct ItemsetEnumerator::Member {
  std::uint32_t rank;  // in the outermost rows
  const std::uint64_t* bits;
};

// Local ranks number the frequent extensions of the path in the order of their ranks outside: so the cells of
// a row, which are read from its end, come in falling order and need no sorting.
struct ItemsetEnumerator::Level {
  const std::uint32_t* outerRank = nullptr;  // by local rank; null at the outermost level: they are the same
  std::vector<std::uint32_t> outerRanks;
  RankedRows rows;
  std::uint64_t pairsInRows = 0;  // pairs of items within a row, over all rows

  std::vector<int> counts;  // scratch of the sweep, by rank of the rows swept; all 0 between
  std::vector<std::uint32_t> extensions;
  std::vector<std::uint32_t> localRank;  // by rank of the rows swept; kNone: no frequent extension
  std::vector<std::uint32_t> row;        // filled from its end
  std::vector<std::uint64_t> bits;       // bit sets of the extensions of one member
  std::vector<Member> members;
};

ItemsetEnumerator::ItemsetEnumerator(int minCount, std::size_t maxLength, ItemsetSink& sink)
    : minCount_(minCount), maxLength_(maxLength), sink_(sink), intersectAndCount_(bestIntersectAndCount()) {}

ItemsetEnumerator::~ItemsetEnumerator() = default;

ItemsetEnumerator::Level& ItemsetEnumerator::level(std::size_t depth) {
  while (levels_.size() <= depth) levels_.push_back(std::make_unique<Level>());
  if (path_.size() <= depth + 1) path_.resize(depth + 2);
  return *levels_[depth];
}

bool ItemsetEnumerator::enumerate(const RankedRows& rows, std::size_t firstRank, std::size_t endRank) {
  if (maxLength_ < 2) return true;
  level(0).outerRank = nullptr;
  return extendAll(rows, firstRank, endRank, 0);
}

// Extends the path, of depth items, by each rank of the range in turn, and goes on from there.
bool ItemsetEnumerator::extendAll(const RankedRows& rows, std::size_t firstRank, std::size_t endRank,
                                  std::size_t depth) {
  Level& next = level(depth + 1);
  for (std::size_t rank = std::max<std::size_t>(firstRank, 1); rank < endRank; ++rank) {
    const std::uint32_t* outer = level(depth).outerRank;
    path_[depth] = outer != nullptr ? outer[rank] : static_cast<std::uint32_t>(rank);
    if (depth == 0 && !sink_.goesOn()) return false;
    if (!project(rows, static_cast<std::uint32_t>(rank), next, depth)) return false;
    if (next.outerRanks.size() < 2 || depth + 3 > maxLength_ || next.rows.rowCount() == 0) continue;
    // An increment of the sweep costs about as much as four words of an intersection.
    constexpr std::uint64_t kWordsPerIncrement = 4;
    const std::uint64_t extensions = next.outerRanks.size();
    const std::uint64_t words = (next.rows.rowCount() + 63) / 64;
    if (extensions * extensions / 2 * words <= kWordsPerIncrement * next.pairsInRows + 64) {
      if (!intersectAll(next, depth + 1)) return false;
    } else {
      next.rows.listOccurrences(next.outerRanks.size());
      if (!extendAll(next.rows, 1, next.outerRanks.size(), depth + 1)) return false;
    }
  }
  return true;
}

// Counts the extensions of the path, whose last item is the given rank of the rows, hands on the frequent
// ones and makes the table of the transactions that hold the path.
bool ItemsetEnumerator::project(const RankedRows& rows, std::uint32_t rank, Level& next, std::size_t depth) {
  const std::uint32_t* const begin = rows.occurrencesBegin(rank);
  const std::uint32_t* const end = rows.occurrencesEnd(rank);
  next.outerRanks.clear();
  next.extensions.clear();
  next.rows.clear();
  next.pairsInRows = 0;
  if (end - begin < minCount_) return true;
  if (next.counts.size() < rank) {
    next.counts.resize(rank, 0);
    next.localRank.resize(rank, ItemCodes::kNone);
  }
  int* const counts = next.counts.data();
  for (const std::uint32_t* occurrence = begin; occurrence != end; ++occurrence) {
    for (const std::uint32_t* cell = rows.cell(*occurrence) - 1; *cell != RankedRows::kRowEnd; --cell)
      ++counts[*cell];
  }
  const std::uint32_t* const outer = level(depth).outerRank;
  bool goesOn = true;
  for (std::uint32_t extension = 0; extension < rank; ++extension) {
    if (counts[extension] < minCount_) {
      counts[extension] = 0;
      continue;
    }
    path_[depth + 1] = outer != nullptr ? outer[extension] : extension;
    goesOn = goesOn && take(depth + 2, counts[extension]);
    next.extensions.push_back(extension);
  }
  for (const std::uint32_t extension : next.extensions) counts[extension] = 0;
  if (!goesOn) return false;
  for (const std::uint32_t extension : next.extensions) {
    next.localRank[extension] = static_cast<std::uint32_t>(next.outerRanks.size());
    next.outerRanks.push_back(outer != nullptr ? outer[extension] : extension);
  }
  next.outerRank = next.outerRanks.data();
  if (next.extensions.size() >= 2 && depth + 3 <= maxLength_) {
    next.row.resize(next.extensions.size() + 1);  // and room for the cell looked at last
    std::uint32_t* const rowEnd = next.row.data() + next.row.size();
    const std::uint32_t* const localRank = next.localRank.data();
    for (const std::uint32_t* occurrence = begin; occurrence != end; ++occurrence) {
      std::uint32_t* first = rowEnd;
      for (const std::uint32_t* cell = rows.cell(*occurrence) - 1; *cell != RankedRows::kRowEnd; --cell) {
        const std::uint32_t local = localRank[*cell];
        *(first - 1) = local;
        first -= local != ItemCodes::kNone ? 1 : 0;
      }
      const auto length = static_cast<std::size_t>(rowEnd - first);
      if (length < 2) continue;
      next.rows.addRow({first, length});
      next.pairsInRows += length * (length - 1) / 2;
    }
  }
  for (const std::uint32_t extension : next.extensions) next.localRank[extension] = ItemCodes::kNone;
  return true;
}

// Goes on from a table by its bit sets: one for each extension, one bit for each row.
bool ItemsetEnumerator::intersectAll(Level& table, std::size_t depth) {
  const std::size_t words = (table.rows.rowCount() + 63) / 64;
  const std::size_t extensions = table.outerRanks.size();
  table.bits.assign(words * extensions, 0);
  std::size_t row = 0;
  const std::vector<std::uint32_t>& cells = table.rows.cells();
  for (std::size_t position = 1; position < cells.size(); ++position) {
    if (cells[position] == RankedRows::kRowEnd) {
      ++row;
    } else {
      table.bits[cells[position] * words + row / 64] |= std::uint64_t{1} << (row % 64);
    }
  }
  table.members.clear();
  for (std::size_t extension = 0; extension < extensions; ++extension) {
    table.members.push_back({table.outerRanks[extension], table.bits.data() + extension * words});
  }
  return intersect(table.members, words, depth);
}

// Extends the path, of depth items, by each member, and that by each more frequent member.
bool ItemsetEnumerator::intersect(const std::vector<Member>& members, std::size_t words, std::size_t depth) {
  Level& next = level(depth + 1);
  next.bits.resize(std::max(next.bits.size(), words * members.size()));
  for (std::size_t last = members.size() - 1; last > 0; --last) {
    path_[depth] = members[last].rank;
    next.members.clear();
    std::uint64_t* room = next.bits.data();
    for (std::size_t i = 0; i < last; ++i) {
      const int count = intersectAndCount_(members[last].bits, members[i].bits, room, words);
      if (count < minCount_) continue;
      path_[depth + 1] = members[i].rank;
      if (!take(depth + 2, count)) return false;
      next.members.push_back({members[i].rank, room});
      room += words;
    }
    if (next.members.size() >= 2 && depth + 3 <= maxLength_ && !intersect(next.members, words, depth + 1))
      return false;
  }
  return true;
}

}  // namespace korassoc::detail
