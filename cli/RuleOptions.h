// Which rules a verb that shows rules is asked for.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/LengthRange.h"
#include "cli/RuleQuery.h"
#include "cli/SupportOption.h"
#include "cli/ThresholdOptions.h"
#include "cli/input/ItemNames.h"

namespace CLI {
class App;
}

namespace korassoc::cli {

// Declares the bounds, the filters by label and the order. Everything that needs no input is checked before
// the input is read.
class RuleOptions {
 public:
  // The command refers to this object, which must outlive the parsing.
  void addTo(CLI::App& command);

  // Reads the texts that were parsed. Throws CliError (kUsage). To be called before all below.
  void check();

  const ThresholdOptions& thresholds() const { return thresholds_; }

  // What they ask of an input. Throws CliError (kUsage) for a label that the input does not have, and for
  // bounds that leave nothing.
  RuleQuery query(const ItemNames& names, int transactions) const;

  // What the query asks for, for people: "all rules: support at least 3 of 10 transactions (25%), ...".
  std::string describe(const RuleQuery& query, const ItemNames& names) const;

 private:
  ThresholdOptions thresholds_;

  // As parsed.
  std::optional<std::string> maxSupportText_, maxConfidenceText_, liftText_, lhsLengthText_, rhsLengthText_;
  std::string orderText_ = "confidence";
  std::vector<std::string> requireLhsTexts_, allowLhsTexts_, requireRhsTexts_, allowRhsTexts_;
  bool minimal_ = false;
  bool nonRedundant_ = false;

  // As understood by check().
  std::optional<SupportOption> maxSupport_;
  RuleQuery template_;  // everything but items and counts
  std::vector<std::string> requireLhs_, allowLhs_, requireRhs_, allowRhs_;
};

}  // namespace korassoc::cli
