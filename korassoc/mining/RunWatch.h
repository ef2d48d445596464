// Watches a run: stops it, ends it in time, and says how far it has come.

#pragma once

#include <chrono>
#include <cstdint>

#include "korassoc/mining/MiningOptions.h"

namespace korassoc::detail {

class RunWatch {
 public:
  // For a run over so many transactions that begins now. The options are lent.
  RunWatch(const MiningOptions& options, std::int64_t transactions);

  // Whether the run has to end; throwReason() then says why. Asked often: the clock is looked at now and
  // then.
  bool hasToEnd();
  [[noreturn]] void throwReason() const;

  void onRead(int transactions);
  void onFound(int itemsets);

 private:
  using Clock = std::chrono::steady_clock;

  void report(Progress::Phase phase);

  const MiningOptions& options_;
  std::int64_t transactions_;
  Clock::time_point start_ = Clock::now();
  unsigned asked_ = 0;
  bool outOfTime_ = false;
  std::int64_t read_ = 0;
  std::int64_t found_ = 0;
};

}  // namespace korassoc::detail
