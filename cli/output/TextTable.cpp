#include "cli/output/TextTable.h"

#include <algorithm>
#include <utility>

#include "cli/Printable.h"

namespace korassoc::cli {
namespace {

constexpr std::string_view kGap = "  ";

}  // namespace

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {
  for (const Column& column : columns_) widths_.push_back(displayWidth(column.heading));
}

void TextTable::measure(std::size_t column, std::size_t width) {
  widths_[column] = std::max(widths_[column], std::min(width, kWidestColumn));
}

void TextTable::writeHeadings(ResultStream& out) const {
  std::vector<std::string> headings;
  for (const Column& column : columns_) headings.push_back(column.heading);
  writeRow(headings, out);
}

void TextTable::writeRow(const std::vector<std::string>& cells, ResultStream& out) const {
  std::string line;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::size_t width = displayWidth(cells[i]);
    const std::string padding(widths_[i] - std::min(widths_[i], width), ' ');
    if (i > 0) line += kGap;
    line += columns_[i].align == Align::kRight ? padding + cells[i] : cells[i] + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  line += '\n';
  out.write(line);
}

}  // namespace korassoc::cli
