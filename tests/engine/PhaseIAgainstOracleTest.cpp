// The first pass of the engine against that of the plain engine over seeded random runs.

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/support/EngineAndOracle.h"
#include "tests/support/RandomRuns.h"

namespace {

class PhaseIAgainstOracle : public testing::TestWithParam<int> {};

TEST_P(PhaseIAgainstOracle, EveryCallLeavesTheSameStateAndReports) {
  for (std::uint64_t i = 0; i < 100; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 100 + i;
    const RandomRun run = randomRun(seed);
    EngineAndOracle both(run);
    int call = 0;
    for (const int n : run.calls) {
      both.runPhaseI(n);
      ASSERT_EQ(both.difference(), "") << "seed " << seed << ", call " << ++call << " of RunPhaseI";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PhaseIAgainstOracle, testing::Range(0, 6));

}  // namespace
