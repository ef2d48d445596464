#include "cli/RuleOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <utility>

#include "cli/CliError.h"
#include "cli/LabelList.h"
#include "cli/Ratio.h"
#include "cli/output/ItemText.h"

namespace korassoc::cli {
namespace {

using Labels = std::vector<std::string>;

// The labels of every use of a repeatable option.
Labels allLabels(const std::string& option, const Labels& texts) {
  Labels labels;
  for (const std::string& text : texts) {
    for (std::string& label : parseLabels(option, text)) labels.push_back(std::move(label));
  }
  return labels;
}

// Fills in the items of one side. Required items are allowed as a matter of course.
void setItems(const std::string& side, const Labels& require, const Labels& allow, const ItemNames& names,
              SideFilter& filter) {
  filter.required = itemsOf("--require-" + side, require, names);
  if (allow.empty()) return;
  const std::vector<int> allowed = itemsOf("--allow-" + side, allow, names);
  filter.allowed.emplace();
  std::set_union(allowed.begin(), allowed.end(), filter.required.begin(), filter.required.end(),
                 std::back_inserter(*filter.allowed));
}

void describeSide(std::string_view side, const LengthRange& usual, const SideFilter& filter,
                  const ItemNames& names, std::string& text) {
  if (!filter.required.empty()) text += fmt::format(", {} with {}", side, setText(filter.required, names));
  if (filter.allowed) text += fmt::format(", {} within {}", side, setText(*filter.allowed, names));
  const LengthRange& length = filter.length;
  if (length.shortest == usual.shortest && length.longest == usual.longest) return;
  if (length.shortest == length.longest) {
    text += fmt::format(", {} of {} items", side, length.shortest);
  } else if (length.longest == LengthRange().longest) {
    text += fmt::format(", {} of {} items or more", side, length.shortest);
  } else {
    text += fmt::format(", {} of {} to {} items", side, length.shortest, length.longest);
  }
}

}  // namespace

void RuleOptions::addTo(CLI::App& command) {
  thresholds_.addTo(command, "rules");

  const std::string filters = "Filters (labels separated by commas; these options may be repeated)";
  const auto addLabels = [&](const char* name, Labels& texts, const char* what) {
    command.add_option(name, texts, what)->type_name("LABELS")->allow_extra_args(false)->group(filters);
  };
  addLabels("--require-lhs", requireLhsTexts_, "Only rules with all of these in the antecedent");
  addLabels("--allow-lhs", allowLhsTexts_, "Only rules with nothing else in the antecedent");
  addLabels("--require-rhs", requireRhsTexts_, "Only rules with all of these in the consequent");
  addLabels("--allow-rhs", allowRhsTexts_, "Only rules with nothing else in the consequent");

  const std::string bounds = "Bounds";
  command.add_option("--lhs-len", lhsLengthText_, "Items in the antecedent: 1:3, 2: or 2")
      ->type_name("A:B")
      ->group(bounds);
  command.add_option("--rhs-len", rhsLengthText_, "Items in the consequent: 1:3, 2: or 2")
      ->type_name("A:B")
      ->group(bounds);
  command.add_option("--lift", liftText_, "Least lift")->type_name("LIFT")->group(bounds);
  command.add_option("--max-support", maxSupportText_, "Largest support, written as --support")
      ->type_name("SUPPORT")
      ->group(bounds);
  command.add_option("--max-confidence", maxConfidenceText_, "Largest confidence, written as --confidence")
      ->type_name("CONFIDENCE")
      ->group(bounds);

  const std::string selection = "Selection";
  command.add_option("--by", orderText_, "What makes a rule better: confidence, support or lift")
      ->type_name("FIGURE")
      ->group(selection);
  CLI::Option* minimal =
      command.add_flag("--minimal", minimal_, "Only antecedents of which no part does as well")
          ->group(selection);
  command
      .add_flag("--nonredundant", nonRedundant_,
                "Only minimal antecedents, each with its largest consequents; the antecedent may be empty")
      ->excludes(minimal)
      ->group(selection);
}

void RuleOptions::check() {
  thresholds_.check();
  template_ = RuleQuery();
  template_.minConfidence = thresholds_.minConfidence();
  template_.top = thresholds_.top();
  if (maxSupportText_) maxSupport_ = SupportOption::parse("--max-support", *maxSupportText_);
  if (maxConfidenceText_) {
    template_.maxConfidence = parseRatio("--max-confidence", *maxConfidenceText_);
    if (template_.maxConfidence < template_.minConfidence) {
      throw CliError(ExitCode::kUsage,
                     fmt::format("--max-confidence {}: is below --confidence, which is {}; raise it",
                                 *maxConfidenceText_, percentText(template_.minConfidence)));
    }
  }
  if (liftText_) template_.minLift = parsePositive("--lift", *liftText_);
  template_.lhs.length.shortest = nonRedundant_ ? 0 : 1;
  if (lhsLengthText_) template_.lhs.length = LengthRange::parse("--lhs-len", *lhsLengthText_, 0);
  if (rhsLengthText_) template_.rhs.length = LengthRange::parse("--rhs-len", *rhsLengthText_, 1);
  if (orderText_ == "confidence") {
    template_.order = RuleQuery::Order::kConfidence;
  } else if (orderText_ == "support") {
    template_.order = RuleQuery::Order::kSupport;
  } else if (orderText_ == "lift") {
    template_.order = RuleQuery::Order::kLift;
  } else {
    throw CliError(ExitCode::kUsage,
                   fmt::format("--by {}: is none of confidence, support and lift", labelText(orderText_)));
  }
  template_.minimal = minimal_;
  template_.nonRedundant = nonRedundant_;
  requireLhs_ = allLabels("--require-lhs", requireLhsTexts_);
  allowLhs_ = allLabels("--allow-lhs", allowLhsTexts_);
  requireRhs_ = allLabels("--require-rhs", requireRhsTexts_);
  allowRhs_ = allLabels("--allow-rhs", allowRhsTexts_);
}

RuleQuery RuleOptions::query(const ItemNames& names, int transactions) const {
  RuleQuery query = template_;
  query.transactions = transactions;
  query.minCount = thresholds_.support().leastCount(transactions);
  query.maxCount = transactions;
  if (maxSupport_) {
    query.maxCount = maxSupport_->largestCount(transactions);
    if (query.maxCount < query.minCount) {
      throw CliError(
          ExitCode::kUsage,
          fmt::format("--max-support {}: allows {} of {} transactions at most, but --support {} asks "
                      "for {}",
                      maxSupport_->text(), query.maxCount, transactions, thresholds_.support().text(),
                      query.minCount));
    }
  }
  setItems("lhs", requireLhs_, allowLhs_, names, query.lhs);
  setItems("rhs", requireRhs_, allowRhs_, names, query.rhs);
  for (const int item : query.lhs.required) {
    if (std::binary_search(query.rhs.required.begin(), query.rhs.required.end(), item)) {
      throw CliError(
          ExitCode::kUsage,
          fmt::format("--require-rhs {}: is required in the antecedent already; an item stands on one "
                      "side of a rule",
                      labelText(names.name(item))));
    }
  }
  return query;
}

std::string RuleOptions::describe(const RuleQuery& query, const ItemNames& names) const {
  std::string text = query.nonRedundant ? "non-redundant rules"
                     : query.minimal    ? "rules with minimal antecedents"
                                        : "all rules";
  text += ": " + thresholds_.describe(query.transactions);
  if (maxSupport_) text += fmt::format(", support at most {}", query.maxCount);
  if (query.maxConfidence < 1)
    text += fmt::format(", confidence at most {}", percentText(query.maxConfidence));
  if (query.minLift > 0) text += fmt::format(", lift at least {:.6g}", query.minLift);
  describeSide("antecedent", {query.nonRedundant ? 0 : 1, LengthRange().longest}, query.lhs, names, text);
  describeSide("consequent", LengthRange(), query.rhs, names, text);
  if (query.top >= 0) text += fmt::format("; the best {}", query.top);
  return text + "; by " + orderText_;
}

}  // namespace korassoc::cli
