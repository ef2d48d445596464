// How exact the answers are to be, and in how much memory.

#pragma once

#include <optional>
#include <string>

#include "cli/MiningPlan.h"

namespace CLI {
class App;
}

namespace korassoc::cli {

// Declares --approximate, --one-pass, --max-sets and --spill.
class MiningOptions {
 public:
  // The command refers to this object, which must outlive the parsing.
  void addTo(CLI::App& command);

  // What was asked for. Throws CliError (kUsage), also for a folder that the spill file cannot be made in.
  MiningPlan plan() const;

 private:
  bool approximate_ = false;
  bool onePass_ = false;
  std::optional<std::string> maxSetsText_, spillFolder_;
};

}  // namespace korassoc::cli
