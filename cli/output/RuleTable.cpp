#include "cli/output/RuleTable.h"

#include <fmt/format.h>

#include <cmath>
#include <string>
#include <vector>

#include "cli/Printable.h"
#include "cli/output/ItemText.h"
#include "cli/output/TextTable.h"

namespace korassoc::cli {
namespace {

using Align = TextTable::Align;

std::span<const int> itemsOf(const ItemSet& set) {
  return {set.getTheArray(), static_cast<std::size_t>(set.length())};
}

std::vector<TextTable::Column> withFigures(std::vector<TextTable::Column> columns) {
  for (const char* heading : {"count", "support", "confidence", "lift"}) {
    columns.push_back({heading, Align::kRight});
  }
  return columns;
}

template <typename Figures>  // AssociationRule or ConsequentDescriptor
void addFigures(const Figures& figures, int transactions, std::vector<std::string>& cells) {
  cells.push_back(fmt::format("{}", std::lround(figures.getSupport() * transactions)));
  cells.push_back(fmt::format("{:.3f}%", figures.getSupport() * 100));
  cells.push_back(fmt::format("{:.3f}%", figures.getConfidence() * 100));
  cells.push_back(fmt::format("{:.3f}", figures.getLift()));
}

// Goes twice over the rows: to measure the columns, and to write them.
template <typename Rows, typename CellsOf>
void writeTable(TextTable table, const Rows& rows, const CellsOf& cellsOf, ResultStream& out) {
  if (rows.empty()) return;
  std::vector<std::string> cells;
  for (const auto& row : rows) {
    cells.clear();
    cellsOf(row, cells);
    for (std::size_t i = 0; i < cells.size(); ++i) table.measure(i, displayWidth(cells[i]));
  }
  table.writeHeadings(out);
  for (const auto& row : rows) {
    cells.clear();
    cellsOf(row, cells);
    table.writeRow(cells, out);
  }
}

}  // namespace

void writeRuleTable(std::span<const AssociationRule> rules, const ItemNames& names, int transactions,
                    ResultStream& out) {
  TextTable table(withFigures({{"antecedent"}, {""}, {"consequent"}}));
  writeTable(
      std::move(table), rules,
      [&](const AssociationRule& rule, std::vector<std::string>& cells) {
        cells.push_back(setText(itemsOf(rule.getAntecedent()), names));
        cells.push_back("=>");
        cells.push_back(setText(itemsOf(rule.getConsequent()), names));
        addFigures(rule, transactions, cells);
      },
      out);
}

void writeConsequentTable(std::span<const ConsequentDescriptor> consequents, const ItemNames& names,
                          int transactions, ResultStream& out) {
  TextTable table(withFigures({{"consequent"}}));
  writeTable(
      std::move(table), consequents,
      [&](const ConsequentDescriptor& consequent, std::vector<std::string>& cells) {
        cells.push_back(labelText(names.name(consequent.getItem())));
        addFigures(consequent, transactions, cells);
      },
      out);
}

}  // namespace korassoc::cli
