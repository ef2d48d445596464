#include "cli/Ratio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/ExpectError.h"

namespace korassoc::cli {
namespace {

using ::testing::HasSubstr;

TEST(DecimalNumber, ReadsWholeTextsOnly) {
  EXPECT_EQ(decimalNumber("0.25"), 0.25);
  EXPECT_EQ(decimalNumber(".5"), 0.5);
  EXPECT_EQ(decimalNumber("5."), 5.0);
  EXPECT_EQ(decimalNumber("1e-3"), 0.001);
  EXPECT_EQ(decimalNumber("2E+2"), 200.0);
  EXPECT_EQ(decimalNumber("-1"), -1.0);
  for (const char* bad : {"",
                          " 1",
                          "1 ",
                          "+1",
                          "0,5",
                          "1x",
                          "nan",
                          "NAN",
                          "inf",
                          "-inf",
                          "infinity",
                          "1e999",
                          "1e",
                          "1e+",
                          "e5",
                          "1e5e5",
                          "0x10",
                          "1..2",
                          "--1",
                          "-",
                          ".",
                          "1e99999999999",
                          "1e-2147483648",
                          "1e-10000",
                          "1e10000"}) {
    EXPECT_FALSE(decimalNumber(bad)) << bad;
    EXPECT_FALSE(decimalNumber(bad, -2)) << bad;
  }
}

TEST(DecimalNumber, ShiftsThePointWithoutRoundingTwice) {
  EXPECT_EQ(decimalNumber("33.3", -2), 0.333);
  EXPECT_EQ(decimalNumber("0.1", -2), 0.001);
  EXPECT_EQ(decimalNumber("7", -2), 0.07);
  EXPECT_EQ(decimalNumber("1e1", -2), 0.1);
}

TEST(WholeNumber, ReadsDigitsAlone) {
  EXPECT_EQ(wholeNumber("0"), 0);
  EXPECT_EQ(wholeNumber("007"), 7);
  EXPECT_EQ(wholeNumber("2147483647"), 2147483647);
  for (const char* bad : {"", "-1", "+1", "1.0", "1 ", "2147483648", "99999999999999999999", "1e3"}) {
    EXPECT_FALSE(wholeNumber(bad)) << bad;
  }
}

TEST(ParseRatio, TakesFractionsAndPercentages) {
  EXPECT_EQ(parseRatio("-c", "0"), 0.0);
  EXPECT_EQ(parseRatio("-c", "0.8"), 0.8);
  EXPECT_EQ(parseRatio("-c", "1"), 1.0);
  EXPECT_EQ(parseRatio("-c", "80%"), 0.8);
  EXPECT_EQ(parseRatio("-c", "100%"), 1.0);
  EXPECT_EQ(parseRatio("-c", "12.5%"), 0.125);
}

TEST(ParseRatio, SaysWhatIsWrongAndHowToWriteIt) {
  struct Case {
    const char *text, *said;
  };
  const Case cases[] = {
      {"80", "80: is above 1; "},   {"1.01", "is above 1; "},       {"101%", "is above 100%; "},
      {"-0.1", "is below 0; "},     {"-5%", "is below 0; "},        {"nan", "is not a number; "},
      {"inf", "is not a number; "}, {"1e999", "is not a number; "}, {"", "\"\": is not a number; "},
      {"%", "is not a number; "},   {"0.5x", "is not a number; "},  {"50n", "is not a number; "},
      {"50 %", "is not a number; "}};
  for (const Case& c : cases) {
    const std::string message = errorOf(ExitCode::kUsage, [&] { parseRatio("--confidence", c.text); });
    EXPECT_THAT(message, HasSubstr("--confidence "));
    EXPECT_THAT(message, HasSubstr(c.said));
    EXPECT_THAT(message, HasSubstr("a fraction from 0 to 1 (0.5) or a percentage (50%)"));
  }
}

TEST(ParsePositive, TakesAnyNumberNotBelowZero) {
  EXPECT_EQ(parsePositive("--lift", "0"), 0.0);
  EXPECT_EQ(parsePositive("--lift", "12.5"), 12.5);
  for (const char* bad : {"-1", "nan", "inf", "", "1e999", "2x", "5%"}) {
    EXPECT_THAT(errorOf(ExitCode::kUsage, [&] { parsePositive("--lift", bad); }), HasSubstr("--lift "))
        << bad;
  }
}

}  // namespace
}  // namespace korassoc::cli
