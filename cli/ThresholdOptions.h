// The thresholds that every verb asks for that mines baskets.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/SupportOption.h"

namespace CLI {
class App;
}

namespace korassoc::cli {

// Declares --support, --confidence and --top.
class ThresholdOptions {
 public:
  // Without a usual value, support and confidence have to be given; without a usual top, all are shown.
  ThresholdOptions() = default;
  ThresholdOptions(std::string support, std::string confidence, std::string top);

  // The command refers to this object, which must outlive the parsing. what is shown: "rules".
  void addTo(CLI::App& command, const std::string& what);

  // Reads the texts that were parsed. Throws CliError (kUsage). To be called before all below.
  void check();

  const SupportOption& support() const { return *support_; }
  double minConfidence() const { return minConfidence_; }
  int top() const { return top_; }  // negative: all

  // "support at least 3 of 10 transactions (25%), confidence at least 50%"
  std::string describe(int transactions) const;

 private:
  // As parsed.
  std::string supportText_, confidenceText_;
  std::optional<std::string> topText_;

  // As understood by check().
  std::optional<SupportOption> support_;
  double minConfidence_ = 0;
  int top_ = -1;
};

// A ratio as a percentage of six digits at most: "33.3333%".
std::string percentText(double ratio);

}  // namespace korassoc::cli
