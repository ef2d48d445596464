// Aligned columns of text.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "cli/output/ResultStream.h"

namespace korassoc::cli {

// TextTable lines up cells under their headings, two blanks between columns. Nothing is kept: widths are
// measured first, cell by cell, and rows written after that. Widths are those on a terminal, so that accents
// and wide characters line up. A cell wider than kWidestColumn pushes the rest of its row to the right
// instead of widening every row.
class TextTable {
 public:
  static constexpr std::size_t kWidestColumn = 100;
  enum class Align { kLeft, kRight };
  struct Column {
    std::string heading;
    Align align = Align::kLeft;
  };

  explicit TextTable(std::vector<Column> columns);

  // Makes room for a cell of that column.
  void measure(std::size_t column, std::size_t width);

  void writeHeadings(ResultStream& out) const;
  // Writes a row of one cell for each column. No blanks at the line's end.
  void writeRow(const std::vector<std::string>& cells, ResultStream& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::size_t> widths_;
};

}  // namespace korassoc::cli
