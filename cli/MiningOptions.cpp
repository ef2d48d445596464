#include "cli/MiningOptions.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <limits>

#include "cli/CliError.h"
#include "cli/Printable.h"
#include "cli/Ratio.h"

namespace korassoc::cli {
namespace {

int parseMaxSets(const std::string& text) {
  const auto sets = wholeNumber(text);
  // The empty itemset needs its place, too.
  if (!sets || *sets == 0 || *sets == std::numeric_limits<int>::max()) {
    throw CliError(ExitCode::kUsage,
                   fmt::format("--max-sets {}: is not a number of itemsets; write a whole number, as in "
                               "--max-sets 100000",
                               text.empty() ? std::string("\"\"") : printable(text)));
  }
  return *sets;
}

void checkFolder(const std::string& folder) {
  std::error_code failure;
  if (!std::filesystem::is_directory(folder, failure)) {
    throw CliError(ExitCode::kUsage,
                   fmt::format("--spill {}: is not a folder; name one that may be written to",
                               folder.empty() ? std::string("\"\"") : printable(folder)));
  }
  if (access(folder.c_str(), W_OK | X_OK) != 0) {
    throw CliError(ExitCode::kUsage,
                   fmt::format("--spill {}: is a folder that may not be written to", printable(folder)));
  }
}

}  // namespace

void MiningOptions::addTo(CLI::App& command) {
  const std::string group = "Exactness and memory (without these: all itemsets, with exact counts)";
  CLI::Option* approximate =
      command
          .add_flag("--approximate", approximate_,
                    "Find itemsets while counting, in two passes; some may be missing, counts are exact")
          ->group(group);
  CLI::Option* onePass =
      command
          .add_flag("--one-pass", onePass_,
                    "The first of these passes alone; some may be missing, figures are bounds")
          ->excludes(approximate)
          ->group(group);
  CLI::Option* maxSets =
      command
          .add_option("--max-sets", maxSetsText_,
                      "Keep at most N itemsets in memory; exit code 4 if more are called for")
          ->type_name("N")
          ->group(group);
  command
      .add_option(
          "--spill", spillFolder_,
          "Itemsets that make room for others go to a file in this folder; only --approximate has such")
      ->type_name("DIR")
      ->needs(maxSets)
      ->excludes(onePass)
      ->group(group);
}

MiningPlan MiningOptions::plan() const {
  MiningPlan plan;
  plan.mode = approximate_ ? MiningMode::kApproximate : onePass_ ? MiningMode::kOnePass : MiningMode::kExact;
  if (maxSetsText_) plan.maxSets = parseMaxSets(*maxSetsText_);
  if (spillFolder_) checkFolder(*spillFolder_);
  plan.spillFolder = spillFolder_;
  return plan;
}

}  // namespace korassoc::cli
