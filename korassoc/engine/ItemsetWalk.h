// A depth-first walk through the itemsets of ranked rows that counts what its guide asks for.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "korassoc/engine/PopCount.h"
#include "korassoc/engine/RankedRows.h"

namespace korassoc::detail {

// Every itemset is met once, from its least frequent item on: each item is extended by more frequent ones.
//
// The rows that hold an item are swept once to count all extensions of it together ("occurrence deliver":
// Uno, Kiyomi & Arimura, FIMI 2004). The extensions that the guide keeps and these rows make a smaller table,
// which is treated like the whole one, or, where it is dense enough for that to be the shorter way, as bit
// sets that are intersected (Zaki, Parthasarathy, Ogihara & Li, KDD 1997: "Eclat"). Cost: the sum over the
// itemsets walked through of the rows that hold them, shortened to the extensions kept; a 64th of that where
// bits are intersected.
//
//   table of {}    columns   0 1 2 3 4 5 6 ...            the ranks
//   table of {5}   columns   0 1 2       are 1 3 4:       the extensions that were kept there
//
// Columns number the extensions of the path in the order of their ranks: so the cells of a row, which are
// read from its end, come in falling order and need no sorting.
//
// A Guide has
//   int* enter(std::size_t depth, std::uint32_t column, std::size_t rows)
//       The path, of depth items, goes on with a column of its table, whose set is in so many rows at most.
//       Answers where to add up the counts of the columns before it; null: nothing there is to be counted.
//   std::uint32_t nextKept(std::size_t depth, std::uint32_t from, std::uint32_t end)
//       After enter(): the first of the columns [from, end) that becomes a column of the next table; end when
//       none does. Their counts are complete. Each column before the one entered is asked for once,
//       ascending.
//   bool goesOn()     asked often. False ends the walk.
//   bool stopped()    whether nextKept() or goesOn() wants the walk to end.
template <typename Guide>
class ItemsetWalk {
 public:
  // maxLength: most items of a set that is counted. The guide is lent.
  ItemsetWalk(Guide& guide, std::size_t maxLength)
      : guide_(guide), maxLength_(maxLength), intersectAndCount_(bestIntersectAndCount()) {}

  // Walks through the sets of two and more items whose least frequent item has a rank in [firstRank,
  // endRank). False when the guide stopped it.
  bool walk(const RankedRows& rows, std::size_t firstRank, std::size_t endRank) {
    return maxLength_ < 2 || extendAll(rows, firstRank, endRank, 0);
  }

 private:
  // The rows that hold the path, with its extensions as columns.
  struct Table {
    RankedRows rows;
    std::size_t columns = 0;
    std::uint64_t pairsInRows = 0;  // pairs of items within a row, over all rows

    std::vector<std::uint64_t> bits;            // bit sets of the columns
    std::vector<const std::uint64_t*> members;  // by column, where bits stand for the rows
  };

  Table& table(std::size_t depth) {
    while (tables_.size() <= depth) tables_.push_back(std::make_unique<Table>());
    return *tables_[depth];
  }

  bool goesOn() {
    constexpr std::uint32_t kSetsBetweenLooks = 1024;
    if (++setsEntered_ % kSetsBetweenLooks == 0 && !guide_.goesOn()) return false;
    return !guide_.stopped();
  }

  // Extends the path, of depth items, by each column of the range in turn, and goes on from there.
  bool extendAll(const RankedRows& rows, std::size_t firstColumn, std::size_t endColumn, std::size_t depth) {
    Table& next = table(depth + 1);
    for (std::size_t column = std::max<std::size_t>(firstColumn, 1); column < endColumn; ++column) {
      if (depth == 0 && !guide_.goesOn()) return false;
      const std::span<const std::uint32_t> occurrences = rows.occurrences(column);
      int* const counts = guide_.enter(depth, static_cast<std::uint32_t>(column), occurrences.size());
      if (counts == nullptr) continue;
      sweep(rows, occurrences, counts);
      keep(depth, static_cast<std::uint32_t>(column));
      if (!goesOn()) return false;
      if (kept_.size() < 2 || depth + 3 > maxLength_) continue;
      project(rows, occurrences, static_cast<std::uint32_t>(column), next);
      // An increment of the sweep costs about as much as four words of an intersection.
      constexpr std::uint64_t kWordsPerIncrement = 4;
      const std::uint64_t columns = next.columns;
      const std::uint64_t words = (next.rows.rowCount() + 63) / 64;
      if (columns * columns / 2 * words <= kWordsPerIncrement * next.pairsInRows + 64) {
        makeBits(next, words);
        if (!intersect(next.members, words, depth + 1)) return false;
      } else {
        next.rows.listOccurrences(next.columns);
        if (!extendAll(next.rows, 1, next.columns, depth + 1)) return false;
      }
    }
    return true;
  }

  static void sweep(const RankedRows& rows, std::span<const std::uint32_t> occurrences, int* counts) {
    for (const std::uint32_t occurrence : occurrences) {
      for (const std::uint32_t* cell = rows.cell(occurrence) - 1; *cell != RankedRows::kRowEnd; --cell)
        ++counts[*cell];
    }
  }

  void keep(std::size_t depth, std::uint32_t column) {
    kept_.clear();
    std::uint32_t extension = guide_.nextKept(depth, 0, column);
    for (; extension < column; extension = guide_.nextKept(depth, extension + 1, column))
      kept_.push_back(extension);
  }

  // Makes the table of the rows with the given occurrences of a column, out of the columns kept.
  void project(const RankedRows& rows, std::span<const std::uint32_t> occurrences, std::uint32_t column,
               Table& next) {
    next.rows.clear();
    next.columns = kept_.size();
    next.pairsInRows = 0;
    if (nextColumn_.size() < column) nextColumn_.resize(column, kNotKept);
    for (std::size_t i = 0; i < kept_.size(); ++i) nextColumn_[kept_[i]] = static_cast<std::uint32_t>(i);
    row_.resize(std::max(row_.size(), kept_.size() + 1));  // and room for the cell looked at last
    std::uint32_t* const rowEnd = row_.data() + row_.size();
    const std::uint32_t* const nextColumn = nextColumn_.data();
    for (const std::uint32_t occurrence : occurrences) {
      std::uint32_t* first = rowEnd;
      for (const std::uint32_t* cell = rows.cell(occurrence) - 1; *cell != RankedRows::kRowEnd; --cell) {
        const std::uint32_t to = nextColumn[*cell];
        *(first - 1) = to;
        first -= to != kNotKept ? 1 : 0;
      }
      const auto length = static_cast<std::size_t>(rowEnd - first);
      if (length < 2) continue;
      next.rows.addRow({first, length});
      next.pairsInRows += length * (length - 1) / 2;
    }
    for (const std::uint32_t extension : kept_) nextColumn_[extension] = kNotKept;
  }

  // One bit set for each column, one bit for each row.
  static void makeBits(Table& table, std::size_t words) {
    table.bits.assign(words * table.columns, 0);
    std::size_t row = 0;
    const std::span<const std::uint32_t> cells = table.rows.cells();
    for (std::size_t position = 1; position < cells.size(); ++position) {
      if (cells[position] == RankedRows::kRowEnd) {
        ++row;
      } else {
        table.bits[cells[position] * words + row / 64] |= std::uint64_t{1} << (row % 64);
      }
    }
    table.members.clear();
    for (std::size_t column = 0; column < table.columns; ++column)
      table.members.push_back(table.bits.data() + column * words);
  }

  // Extends the path, of depth items, by each column, and that by each column before it.
  bool intersect(const std::vector<const std::uint64_t*>& members, std::size_t words, std::size_t depth) {
    Table& next = table(depth + 1);
    next.bits.resize(std::max(next.bits.size(), words * members.size()));
    for (std::size_t column = members.size() - 1; column > 0; --column) {
      int* const counts = guide_.enter(depth, static_cast<std::uint32_t>(column), words * 64);
      if (counts == nullptr) continue;
      next.members.clear();
      std::uint64_t* room = next.bits.data();
      for (std::uint32_t extension = 0; extension < column; ++extension) {
        counts[extension] += intersectAndCount_(members[column], members[extension], room, words);
        if (guide_.nextKept(depth, extension, extension + 1) != extension) continue;
        next.members.push_back(room);
        room += words;
      }
      if (!goesOn()) return false;
      if (next.members.size() >= 2 && depth + 3 <= maxLength_ && !intersect(next.members, words, depth + 1))
        return false;
    }
    return true;
  }

  static constexpr std::uint32_t kNotKept = 0xFFFFFFFF;

  Guide& guide_;
  std::size_t maxLength_;
  IntersectAndCount intersectAndCount_;
  std::uint32_t setsEntered_ = 0;
  std::vector<std::unique_ptr<Table>> tables_;  // by depth, reused

  // Scratch.
  std::vector<std::uint32_t> kept_;        // columns kept by the guide, ascending
  std::vector<std::uint32_t> nextColumn_;  // by column; kNotKept where it is not in the next table
  std::vector<std::uint32_t> row_;         // filled from its end
};

}  // namespace korassoc::detail
