#include "cli/input/LineReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "cli/input/IntegerScanner.h"
#include "cli/input/LabelScanner.h"
#include "cli/output/ItemText.h"
#include "tests/cli/ExpectError.h"
#include "tests/support/Dice.h"
#include "tests/support/PlainReader.h"
#include "tests/support/TemporaryFile.h"

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

BasketInput readText(std::string_view text, std::optional<Separator> separator = std::nullopt) {
  const TemporaryFile file(text);
  return LineReader(separator).read(Input::open(file.name()));
}

// Every basket as its set of labels.
std::vector<std::string> sets(const BasketInput& input) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < input.baskets.size(); ++i) {
    texts.push_back(setText(input.baskets[i], input.names));
  }
  return texts;
}

// What the reader says about the text, without the file's own name.
std::string refusal(std::string_view text) {
  const TemporaryFile file(text);
  const std::string message = errorOf(ExitCode::kInput, [&] { LineReader().read(Input::open(file.name())); });
  EXPECT_THAT(message, StartsWith(file.name() + ":"));
  return message.substr(std::min(message.size(), file.name().size() + 1));
}

TEST(LineReader, ReadsLabels) {
  const BasketInput input = readText("milk,bread\nbeer\n");
  EXPECT_THAT(sets(input), ElementsAre("{bread, milk}", "{beer}"));
  EXPECT_EQ(input.names.size(), 3U);
  EXPECT_EQ(input.format, "labels separated by comma (recognised)");
}

TEST(LineReader, ReadsIntegersAsTheirOwnItems) {
  const BasketInput input = readText("39 7\n7 2147483647\n");
  EXPECT_THAT(input.baskets[0], ElementsAre(7, 39));
  EXPECT_THAT(input.baskets[1], ElementsAre(7, 2147483647));
  EXPECT_TRUE(input.names.areNumbers());
  EXPECT_EQ(input.names.size(), 3U);
  EXPECT_EQ(input.format, "integers separated by blanks (recognised)");
}

TEST(LineReader, ReadsQuotedIntegersAsIntegersToo) {
  const BasketInput input = readText("\"39\",\"7\"\n7,\n");
  EXPECT_THAT(input.baskets[0], ElementsAre(7, 39));
  EXPECT_TRUE(input.names.areNumbers());
}

TEST(LineReader, ReadsLabelsWhenOneItemIsNoPlainInteger) {
  for (const std::string odd : {"007", "-1", "2147483648", "1.5", "x", "+3"}) {
    const BasketInput input = readText("7 39\n" + odd + " 7\n");
    EXPECT_FALSE(input.names.areNumbers()) << odd;
    EXPECT_TRUE(input.names.find(odd)) << odd;
    EXPECT_EQ(input.names.size(), 3U) << odd;
  }
}

TEST(LineReader, ToleratesByteOrderMarkAndCarriageReturns) {
  EXPECT_THAT(sets(readText("\xEF\xBB\xBF"
                            "bread,milk\r\nbeer\r\n")),
              ElementsAre("{bread, milk}", "{beer}"));
  EXPECT_THAT(sets(readText("\xEF\xBB\xBF"
                            "1 2\r\n3\r\n")),
              ElementsAre("{1, 2}", "{3}"));
  EXPECT_THAT(sets(readText("bread,milk\r")), ElementsAre("{bread, milk}"));
}

TEST(LineReader, ReadsQuotedItems) {
  EXPECT_THAT(sets(readText("\"milk, whole\",bread\n")), ElementsAre("{bread, \"milk, whole\"}"));
  EXPECT_THAT(sets(readText("\"5\"\" pipe\" bread\n")), ElementsAre("{\"5\"\" pipe\", bread}"));
  EXPECT_THAT(sets(readText(" \"a\" ; \"b\" \n")), ElementsAre("{a, b}"));
  EXPECT_THAT(sets(readText("\" a\";a\n")), ElementsAre("{\" a\", a}"));
  EXPECT_THAT(sets(readText("\"whole milk\"\t\"rye bread\"\n")), ElementsAre("{rye bread, whole milk}"));
}

TEST(LineReader, DropsBlanksAroundItemsButNotInside) {
  EXPECT_THAT(sets(readText("  whole milk ,\tbread\t\n", Separator::kComma)),
              ElementsAre("{bread, whole milk}"));
  EXPECT_THAT(sets(readText("a  b\t c\nd\n", Separator::kBlanks)), ElementsAre("{a, b, c}", "{d}"));
}

TEST(LineReader, CountsWhatItPassesOver) {
  const BasketInput input = readText("\na,,b,\n   \nb,b,a\n,,\n\"\",c\na,a\n");
  EXPECT_THAT(sets(input), ElementsAre("{a, b}", "{a, b}", "{c}", "{a}"));
  EXPECT_EQ(input.emptyLines, 3U);
  EXPECT_EQ(input.emptyItems, 3U);  // two in the second line, one before c
  EXPECT_EQ(input.basketsWithRepeats, 2U);
}

TEST(LineReader, TakesTheSeparatorItIsTold) {
  const BasketInput input = readText("a,b c\n", Separator::kBlanks);
  EXPECT_EQ(input.names.size(), 2U);
  EXPECT_TRUE(input.names.find("a,b"));
  EXPECT_EQ(input.format, "labels separated by blanks (as asked)");
}

TEST(LineReader, ReadsALineOfTenMegabytes) {
  std::string line;
  int items = 0;
  while (line.size() < 10'000'000) line += std::to_string(100000 + items++) + " ";
  const BasketInput integers = readText("1 2\n" + line + "\n3\n");
  ASSERT_EQ(integers.baskets.size(), 3U);
  EXPECT_EQ(integers.baskets[1].size(), static_cast<std::size_t>(items));

  std::string labels;
  for (items = 0; labels.size() < 10'000'000; ++items) {
    labels += "the item of number " + std::to_string(items % 50000) + ",";
  }
  ASSERT_GE(items, 50000);
  const BasketInput labelled = readText("x,y\n" + labels + "\n3");
  ASSERT_EQ(labelled.baskets.size(), 3U);
  EXPECT_EQ(labelled.baskets[1].size(), 50000U);
  EXPECT_EQ(labelled.basketsWithRepeats, 1U);
}

TEST(LineReader, RefusesAnItemTooLongToBeOne) {
  const std::string longest(LabelScanner::kLongestLabel, 'x');
  EXPECT_EQ(readText(longest + " y\n").names.size(), 2U);
  EXPECT_THAT(refusal("a b\nb " + longest + "x\n"),
              StartsWith("2:3: an item of 4097 bytes, more than 4096; "));
}

TEST(LineReader, SaysWhereAndWhatInOneLine) {
  struct Case {
    const char* what;
    std::string text;
    const char* place;
    const char* said;
  };
  const Case cases[] = {
      {"an empty file", "", "1:1: ", "the input is empty"},
      {"a byte order mark alone", "\xEF\xBB\xBF", "1:1: ", "the input is empty"},
      {"only blank lines", "\n  \n\r\n\n", "1:1: ", "no line holds an item (lines: 4)"},
      {"only separators", ",,\n,\n", "1:1: ", "no line holds an item (lines: 2)"},
      {"an unbalanced quote", "a,b\nc,\"d,e\nf\n", "2:3: ", "not closed on its line"},
      {"a quote at the end of a line", "a,\"\n", "1:3: ", "not closed on its line"},
      {"a quote inside an item", "a,5\" pipe\n", "1:4: ", "a quote inside an item"},
      {"text behind a quote", "\"a\"b,c\n", "1:4: ", "text follows a closing quote"},
      {"text behind a quote and a blank", "\"a\" b,c\n", "1:4: ", "text follows a closing quote"},
      {"a NUL", std::string("a,b\nc\0,d\n", 9), "2:2: ", "control character 0x00"},
      {"a control character among integers", "1 2\n3 \x01\n", "2:3: ", "control character 0x01"},
      {"Latin-1", "tea\ncaf\xE9\n", "2:4: ", "not UTF-8"},
      {"Latin-1 behind UTF-8", "\xC3\xBC\xC3\xBC\xFC\n", "1:3: ", "not UTF-8"},
      {"old line ends", "a,b\rc,d\r", "1:4: ", "carriage return"},
      {"UTF-16",
       std::string("\xFF\xFE"
                   "a\0",
                   4),
       "1:1: ", "UTF-16"}};
  for (const Case& c : cases) {
    const std::string message = refusal(c.text);
    EXPECT_THAT(message, StartsWith(c.place)) << c.what;
    EXPECT_THAT(message, HasSubstr(c.said)) << c.what;
    EXPECT_THAT(message, HasSubstr(";")) << c.what << ": no hint at what to try";
  }
}

// Lines of integers are read by a scanner of their own. Whatever digits, separators and line ends come in
// whatever order, it must not show.
TEST(LineReader, ReadsIntegersAlikeOnBothPaths) {
  const std::optional<Separator> separators[] = {std::nullopt, Separator::kComma, Separator::kSemicolon,
                                                 Separator::kTab, Separator::kBlanks};
  const std::vector<std::string> items = {"0", "7", "39", "12", "4096", "1234567", "12345678", "2147483647"};
  const std::vector<std::string> ends = {"\n", "\r\n", "", "\r"};
  const std::vector<std::string> odd = {",", ";", "\t", " ", "\r", "\n", "\r\n", "05", "2147483648", "\r\r"};
  Dice dice(11);
  int fast = 0;
  for (int round = 0; round < 6000; ++round) {
    const char mark = ",;\t "[dice.below(4)];
    const int oddPercent = 4 * dice.below(4);
    std::string text;
    for (int line = dice.below(5); line >= 0; --line) {
      for (int item = dice.below(4); item > 0; --item) {
        text += dice.oneOf(items);
        if (dice.chance(oddPercent)) text += dice.oneOf(odd);
        if (item > 1) text += mark;
        if (mark != '\t' && dice.chance(20)) text += ' ';
      }
      text += line > 0 ? ends[static_cast<std::size_t>(dice.below(2))] : dice.oneOf(ends);
      if (dice.chance(oddPercent)) text += dice.oneOf(odd);
    }
    const auto wanted = separators[dice.below(2) * dice.below(5)];
    ASSERT_EQ(differenceFromPlain(text, wanted, std::size_t{1} << dice.below(6)), "")
        << testing::PrintToString(text);
    BasketBuilder ignored;
    if (scanIntegers(text, wanted, ignored)) ++fast;
  }
  EXPECT_GT(fast, 2400);  // else the other path was compared with itself
}

// Integers are read in blocks of 256 KiB, and what has a longer line as a whole.
TEST(LineReader, ReadsIntegersAlikeInBlocks) {
  Dice dice(12);
  for (const int longest : {2000, 100000}) {
    std::string text;
    std::vector<std::vector<int>> expected;
    while (text.size() < 600'000) {
      std::vector<int>& basket = expected.emplace_back();
      for (int items = dice.below(longest); items >= 0; --items) basket.push_back(dice.below(100000));
      for (const int item : basket) text += std::to_string(item) + " ";
      text += '\n';
      std::sort(basket.begin(), basket.end());
      basket.erase(std::unique(basket.begin(), basket.end()), basket.end());
    }
    const BasketInput input = readText(text + "1 2");
    expected.push_back({1, 2});
    ASSERT_EQ(input.baskets.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      ASSERT_TRUE(std::ranges::equal(input.baskets[i], expected[i])) << longest << ", basket " << i;
    }
    EXPECT_EQ(readText(text + "x").baskets.size(), expected.size());
  }
}

TEST(LineReader, TakesACarriageReturnOnlyAtTheEndOfALine) {
  for (const std::string item : {"2", "x"}) {
    EXPECT_THAT(sets(readText(item + "\r")), ElementsAre("{" + item + "}"));
    EXPECT_THAT(refusal(item + "\r\r"), StartsWith("1:2: a carriage return that no line feed follows"));
    EXPECT_THAT(refusal(item + "\r\r\n"), StartsWith("1:2: a carriage return that no line feed follows"));
    EXPECT_THAT(refusal(item + "\r" + item + "\n"), StartsWith("1:2: a carriage return"));
  }
}

}  // namespace
}  // namespace korassoc::cli
