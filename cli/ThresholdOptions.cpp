#include "cli/ThresholdOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <utility>

#include "cli/CliError.h"
#include "cli/Ratio.h"
#include "cli/output/ItemText.h"

namespace korassoc::cli {

ThresholdOptions::ThresholdOptions(std::string support, std::string confidence, std::string top)
    : supportText_(std::move(support)), confidenceText_(std::move(confidence)), topText_(std::move(top)) {}

void ThresholdOptions::addTo(CLI::App& command, const std::string& what) {
  command
      .add_option("-s,--support", supportText_,
                  "Least support: a fraction (0.01), a percentage (1%) or a number of transactions (25n)")
      ->type_name("SUPPORT")
      ->required(supportText_.empty())
      ->capture_default_str();
  command
      .add_option("-c,--confidence", confidenceText_,
                  "Least confidence: a fraction (0.5) or a percentage (50%)")
      ->type_name("CONFIDENCE")
      ->required(confidenceText_.empty())
      ->capture_default_str();
  command.add_option("--top", topText_, "Only the K best " + what)
      ->type_name("K")
      ->default_str(topText_.value_or(""));
}

void ThresholdOptions::check() {
  support_ = SupportOption::parse("--support", supportText_);
  minConfidence_ = parseRatio("--confidence", confidenceText_);
  if (!topText_) return;
  const auto top = wholeNumber(*topText_);
  if (!top || *top == 0) {
    throw CliError(ExitCode::kUsage,
                   fmt::format("--top {}: is not a number of 1 or more; write one, as in --top 20",
                               labelText(*topText_)));
  }
  top_ = *top;
}

std::string ThresholdOptions::describe(int transactions) const {
  return fmt::format("support at least {} of {} transactions ({}), confidence at least {}",
                     support_->leastCount(transactions), transactions, support_->text(),
                     percentText(minConfidence_));
}

std::string percentText(double ratio) { return fmt::format("{:.6g}%", ratio * 100); }

}  // namespace korassoc::cli
