#include "tests/oracle/PlainCeilings.h"

#include <gtest/gtest.h>

namespace oracle {
namespace {

TEST(PlainCeilings, AveragesTheCeilings) {
  PlainCeilings ceilings;
  EXPECT_EQ(ceilings.average(), 0.0);
  ceilings.add(0.5);
  EXPECT_EQ(ceilings.average(), 0.5);
  ceilings.add(0.25);  // a fall: a second chunk; (0.5 + 0.25) / 2
  EXPECT_EQ(ceilings.chunks().size(), 2U);
  EXPECT_EQ(ceilings.average(), 0.375);
  ceilings.add(0.25);
  EXPECT_EQ(ceilings.chunks().size(), 2U);
  EXPECT_DOUBLE_EQ(ceilings.average(), 1.0 / 3);
  ceilings.add(0.375);  // lifts the second chunk alone: (0.5 + 3 * 0.375) / 4
  EXPECT_EQ(ceilings.chunks()[0].ceiling, 0.5);
  EXPECT_EQ(ceilings.chunks()[1].ceiling, 0.375);
  EXPECT_EQ(ceilings.average(), 0.40625);
  ceilings.add(0.75);  // lifts both
  EXPECT_EQ(ceilings.chunks()[0].count, 1);
  EXPECT_EQ(ceilings.chunks()[1].count, 4);
  EXPECT_EQ(ceilings.average(), 0.75);
}

}  // namespace
}  // namespace oracle
