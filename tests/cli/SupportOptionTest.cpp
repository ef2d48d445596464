#include "cli/SupportOption.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/cli/ExpectError.h"

namespace korassoc::cli {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

TEST(SupportOption, GivesTheSmallestCountNotBelowIt) {
  struct Case {
    const char* text;
    int transactions, least, largest;
  };
  const Case cases[] = {
      {"0.25", 10, 3, 2},     // 2.5: a quarter of ten transactions takes three of them
      {"0.3", 10, 3, 3},      // 0.3 * 10 is 3
      {"0.29", 100, 29, 29},  // 0.29 * 100 is 28.999999999999996
      {"0.07", 100, 7, 7},    // 0.07 * 100 is 7.000000000000001
      {"7%", 100, 7, 7},     {"1%", 9835, 99, 98}, {"1", 5, 5, 5},
      {"100%", 5, 5, 5},     {"1e-9", 5, 1, 0},    {"1e-7%", 5, 1, 0},
      {"0.001", 5, 1, 0},    {"3n", 5, 3, 3},      {"1n", 5, 1, 1},
      {"25n", 5, 25, 25},    {"1e-3", 1000, 1, 1}, {"1", 2147483647, 2147483647, 2147483647}};
  for (const Case& c : cases) {
    const SupportOption support = SupportOption::parse("-s", c.text);
    EXPECT_EQ(support.leastCount(c.transactions), c.least) << c.text << " of " << c.transactions;
    EXPECT_EQ(support.largestCount(c.transactions), c.largest) << c.text << " of " << c.transactions;
  }
}

TEST(SupportOption, MeetsEveryExactFraction) {
  for (int n = 1; n <= 300; ++n) {
    for (int k = 1; k <= n; ++k) {
      char text[32];
      std::snprintf(text, sizeof text, "%.17g", static_cast<double>(k) / n);
      EXPECT_EQ(SupportOption::parse("-s", text).leastCount(n), k) << text << " of " << n;
    }
  }
}

TEST(SupportOption, IsAFractionOfTheTransactions) {
  EXPECT_EQ(SupportOption::parse("-s", "0.25").fractionOf(10), 0.25);
  EXPECT_EQ(SupportOption::parse("-s", "33.3%").fractionOf(10), 0.333);
  EXPECT_EQ(SupportOption::parse("-s", "25n").fractionOf(100), 0.25);
  EXPECT_EQ(SupportOption::parse("-s", "25n").fractionOf(10), 2.5);
}

TEST(SupportOption, ShowsTheThreeSpellingsWhenItIsWrong) {
  struct Case {
    const char *text, *said;
  };
  const Case cases[] = {{"25", "--support 25: is above 1; "},
                        {"1.0001", "is above 1; "},
                        {"101%", "is above 100%; "},
                        {"-0.1", "is below 0; "},
                        {"-5%", "is below 0; "},
                        {"", "\"\": is not a number; "},
                        {"%", "is not a number; "},
                        {"n", "is not a whole number of transactions; "},
                        {"-3n", "is not a whole number of transactions; "},
                        {"2.5n", "is not a whole number of transactions; "},
                        {"9999999999n", "is not a whole number of transactions; "},
                        {"nan", "is not a number; "},
                        {"NaN", "is not a number; "},
                        {"inf", "is not a number; "},
                        {"1e999", "is not a number; "},
                        {"0", "--support 0: is 0, which asks for nothing; "},
                        {"0%", "is 0, which"},
                        {"0n", "is 0, which"},
                        {"0.0", "is 0, which"},
                        {"000", "is 0, which"},
                        {"-0", "is 0, which"},
                        {"0e9", "is 0, which"},
                        {"0.0%", "is 0, which"},
                        {"00n", "is 0, which"},
                        {"1e-999", "is 0, which"},
                        {"1e-300", "is below 1e-9, which is hardly meant; "},
                        {"0.00000000099", "is below 1e-9, "},
                        {"9.9e-8%", "is below 1e-9, "},
                        {"0.1x", "is not a number; "},
                        {"0,1", "is not a number; "},
                        {"1 %", "is not a number; "}};
  for (const Case& c : cases) {
    EXPECT_THAT(errorOf(ExitCode::kUsage, [&] { SupportOption::parse("--support", c.text); }),
                AllOf(HasSubstr(c.said), HasSubstr("(0.01)"), HasSubstr("(1%)"), HasSubstr("(25n)")))
        << c.text;
  }
}

}  // namespace
}  // namespace korassoc::cli
