#include "cli/output/RuleTable.h"

#include <fmt/format.h>

#include <cmath>
#include <initializer_list>
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

std::vector<TextTable::Column> withFigures(std::vector<TextTable::Column> columns,
                                           std::initializer_list<const char*> figures) {
  for (const char* heading : figures) columns.push_back({heading, Align::kRight});
  return columns;
}

constexpr std::initializer_list<const char*> kFigures = {"count", "support", "confidence", "lift"};

std::string percent(double ratio) { return fmt::format("{:.3f}%", ratio * 100); }

void addSides(const AssociationRule& rule, const ItemNames& names, std::vector<std::string>& cells) {
  cells.push_back(setText(itemsOf(rule.getAntecedent()), names));
  cells.push_back("=>");
  cells.push_back(setText(itemsOf(rule.getConsequent()), names));
}

template <typename Figures>  // AssociationRule or ConsequentDescriptor
void addFigures(const Figures& figures, int transactions, std::vector<std::string>& cells) {
  cells.push_back(fmt::format("{}", std::lround(figures.getSupport() * transactions)));
  cells.push_back(percent(figures.getSupport()));
  cells.push_back(percent(figures.getConfidence()));
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
  TextTable table(withFigures({{"antecedent"}, {""}, {"consequent"}}, kFigures));
  writeTable(
      std::move(table), rules,
      [&](const AssociationRule& rule, std::vector<std::string>& cells) {
        addSides(rule, names, cells);
        addFigures(rule, transactions, cells);
      },
      out);
}

void writeBoundedRuleTable(std::span<const AssociationRule> rules,
                           const std::function<RuleBounds(const AssociationRule&)>& boundsOf,
                           const ItemNames& names, int transactions, ResultStream& out) {
  TextTable table(
      withFigures({{"antecedent"}, {""}, {"consequent"}},
                  {"count >=", "count <=", "support >=", "support <=", "confidence >=", "confidence <="}));
  writeTable(
      std::move(table), rules,
      [&](const AssociationRule& rule, std::vector<std::string>& cells) {
        const RuleBounds bounds = boundsOf(rule);
        addSides(rule, names, cells);
        for (const int count : {bounds.leastCount, bounds.largestCount})
          cells.push_back(fmt::format("{}", count));
        for (const int count : {bounds.leastCount, bounds.largestCount}) {
          cells.push_back(percent(static_cast<double>(count) / transactions));
        }
        cells.push_back(percent(bounds.leastConfidence));
        cells.push_back(percent(bounds.largestConfidence));
      },
      out);
}

void writeConsequentTable(std::span<const ConsequentDescriptor> consequents, const ItemNames& names,
                          int transactions, ResultStream& out) {
  TextTable table(withFigures({{"consequent"}}, kFigures));
  writeTable(
      std::move(table), consequents,
      [&](const ConsequentDescriptor& consequent, std::vector<std::string>& cells) {
        cells.push_back(labelText(names.name(consequent.getItem())));
        addFigures(consequent, transactions, cells);
      },
      out);
}

}  // namespace korassoc::cli
