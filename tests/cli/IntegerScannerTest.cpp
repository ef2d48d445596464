#include "cli/input/IntegerScanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;

std::optional<Separator> scan(std::string_view text, std::optional<Separator> wanted = std::nullopt) {
  BasketBuilder builder;
  return scanIntegers(text, wanted, builder);
}

TEST(ScanIntegers, ReadsEachSeparator) {
  struct Case {
    std::string_view text;
    Separator separator;
  };
  const Case cases[] = {{"1 20 3\n4\n", Separator::kBlanks},     {"1,20,3\n4\n", Separator::kComma},
                        {"1;20;3\n4\n", Separator::kSemicolon},  {"1\t20\t3\n4\n", Separator::kTab},
                        {"1, 20 ,3\n4\n", Separator::kComma},    {"  1  20 3  \n 4\n", Separator::kBlanks},
                        {"1 20 3\r\n4\r\n", Separator::kBlanks}, {"1 20 3\n4", Separator::kBlanks},
                        {"1 20 3\n4\r", Separator::kBlanks},     {"1 20\t3\n4\n", Separator::kBlanks}};
  for (const Case& c : cases) {
    BasketBuilder builder;
    EXPECT_EQ(scanIntegers(c.text, std::nullopt, builder), c.separator) << c.text;
    const Baskets baskets = builder.take();
    ASSERT_EQ(baskets.size(), 2U) << c.text;
    EXPECT_THAT(baskets[0], ElementsAre(1, 3, 20)) << c.text;
    EXPECT_THAT(baskets[1], ElementsAre(4)) << c.text;
  }
}

TEST(ScanIntegers, CountsLinesWithoutItems) {
  BasketBuilder builder;
  ASSERT_TRUE(scanIntegers("\n1 2\n  \n\r\n3\n", std::nullopt, builder));
  EXPECT_EQ(builder.emptyLines(), 3U);
}

TEST(ScanIntegers, TakesTheWholeRangeOfItems) {
  BasketBuilder builder;
  ASSERT_TRUE(scanIntegers("0 2147483647\n", std::nullopt, builder));
  EXPECT_THAT(builder.take()[0], ElementsAre(0, 2147483647));
}

TEST(ScanIntegers, LeavesEverythingElseToOthers) {
  const std::string_view texts[] = {"",
                                    "bread\n",
                                    "1 2\nbread\n",
                                    "-1\n",
                                    "+1\n",
                                    "007\n",
                                    "00\n",
                                    "2147483648\n",
                                    "99999999999999999999999\n",
                                    "1.5\n",
                                    "\"1\" 2\n",
                                    "1,,2\n",
                                    "1,2,\n",
                                    ",1\n",
                                    "1\t\t2\n",
                                    "1\t\n",
                                    "1 \t2\n",
                                    "1,2;3\n",
                                    "1,2\n3;4\n",
                                    "1,2\n3 4\n",
                                    "1 2\r3\n",
                                    "1 2\r\r\n",
                                    "1 2\r\r",
                                    "\r\r",
                                    "1 2\v3\n",
                                    "\xEF\xBB\xBF"
                                    "1\n"};
  for (const auto text : texts) EXPECT_FALSE(scan(text)) << text;
}

TEST(ScanIntegers, KeepsToTheSeparatorItIsAskedFor) {
  EXPECT_EQ(scan("1,2\n", Separator::kComma), Separator::kComma);
  EXPECT_FALSE(scan("1,2\n", Separator::kSemicolon));
  EXPECT_FALSE(scan("1 2\n", Separator::kTab));  // one label, "1 2"
  EXPECT_EQ(scan("1\t2\n", Separator::kTab), Separator::kTab);
  EXPECT_EQ(scan("1\t2\n", Separator::kBlanks), Separator::kBlanks);
  EXPECT_EQ(scan("12\n", Separator::kSemicolon), Separator::kSemicolon);
}

}  // namespace
}  // namespace korassoc::cli
