// How baskets are to be mined.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>

#include "korassoc/mining/Support.h"

namespace korassoc {

// How far a run has come.
struct Progress {
  enum class Phase {
    kReading,  // the baskets are read for the first time
    kFinding   // they have been, and itemsets are found in them
  };

  Phase phase;
  std::int64_t transactions;  // read so far
  std::int64_t itemsets;      // found so far
  double shareRead;           // of the first reading, from 0 to 1
};

// What a run is to find, and what it may take. Every field but the support has a value, so that it need not
// be named:
//
//   mine(baskets, {.minSupport = Support::fraction(0.01)})
struct MiningOptions {
  Support minSupport;
  // Items of the longest itemset that is looked for, 1 to 1,000.
  int longestItemset = 10;
  // More itemsets than this end the run with Error (kLimit). None: as many as memory holds.
  std::optional<std::int64_t> maxItemsets = {};
  // A run that takes longer ends with Error (kLimit). It is looked at several times a second.
  std::optional<std::chrono::duration<double>> timeLimit = {};
  // Called now and then on the thread of the run. What it throws ends the run and passes through.
  std::function<void(const Progress&)> onProgress = {};
  // Ends the run with Error (kCancelled).
  std::stop_token stop = {};
};

}  // namespace korassoc
