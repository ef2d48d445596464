// The documents that a verb writes beside its results.

#pragma once

#include <optional>
#include <string>

#include "cli/Mining.h"
#include "cli/RuleQuery.h"
#include "cli/output/DocumentFile.h"

namespace CLI {
class App;
}

namespace korassoc::cli {

// Declares --pmml and --lattice.
class DocumentOptions {
 public:
  // The command refers to this object, which must outlive the parsing.
  void addTo(CLI::App& command);

  // Makes sure that the files can be written, and that none of them is the input (a path, or - for standard
  // input). Throws CliError (kUsage, kRunFailed). To be called before all below.
  void check(const std::string& input);

  // Writes the files that were asked for, and a line for each on standard error. Of the query, the least
  // support, the least confidence and whether redundant rules are left out count. Throws CliError
  // (kRunFailed); what a file held before is still there then.
  void write(Mining& mining, const RuleQuery& query) const;

 private:
  // As parsed.
  std::optional<std::string> pmmlPath_, latticePath_;

  // As understood by check().
  std::optional<DocumentFile> pmml_, lattice_;
};

}  // namespace korassoc::cli
