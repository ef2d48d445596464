// How a run is to find the itemsets.

#pragma once

#include <optional>
#include <string>

namespace korassoc::cli {

enum class MiningMode {
  kExact,        // every frequent itemset with its exact count
  kApproximate,  // the algorithm's two passes: exact counts, but itemsets may be missing
  kOnePass       // the first of them alone: bounds of the counts, and itemsets may be missing
};

struct MiningPlan {
  MiningMode mode = MiningMode::kExact;
  std::optional<int> maxSets;              // the most itemsets of one or more items kept in memory
  std::optional<std::string> spillFolder;  // where those go that make room for others
};

}  // namespace korassoc::cli
