#include "cli/LengthRange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/ExpectError.h"

namespace korassoc::cli {
namespace {

using ::testing::HasSubstr;

TEST(LengthRange, ReadsBothBoundsOneOrTheSame) {
  struct Case {
    const char* text;
    int least, shortest, longest;
  };
  const Case cases[] = {{"1:3", 1, 1, 3}, {"2:2", 1, 2, 2}, {"2", 1, 2, 2},   {"2:", 1, 2, 2147483647},
                        {":3", 1, 1, 3},  {":3", 0, 0, 3},  {"0:1", 0, 0, 1}, {"0", 0, 0, 0}};
  for (const Case& c : cases) {
    const LengthRange range = LengthRange::parse("--lhs-len", c.text, c.least);
    EXPECT_EQ(range.shortest, c.shortest) << c.text;
    EXPECT_EQ(range.longest, c.longest) << c.text;
  }
}

TEST(LengthRange, HoldsItsBounds) {
  const LengthRange range{1, 2};
  EXPECT_FALSE(range.holds(0));
  EXPECT_TRUE(range.holds(1));
  EXPECT_TRUE(range.holds(2));
  EXPECT_FALSE(range.holds(3));
}

TEST(LengthRange, RefusesWhatIsNoRange) {
  for (const char* bad :
       {"", ":", "a", "1:b", "-1:2", "1:-2", "3:1", "0:3", "0", "1.5", "1:2:3", "99999999999", "1 :2"}) {
    EXPECT_THAT(errorOf(ExitCode::kUsage, [&] { LengthRange::parse("--rhs-len", bad, 1); }),
                HasSubstr("--rhs-len "))
        << bad;
  }
}

}  // namespace
}  // namespace korassoc::cli
