// Numbers as text: equal to what a stream in the classic locale writes, whatever the host's locale.

#include "korassoc/xml/NumberFormat.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <sstream>
#include <string>

namespace KorAssocXML {
namespace {

using korassoc::detail::NumberText;

// The conversion spelled out: general notation, 15 significant digits, classic locale.
std::string classic(double value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(15);
  stream << value;
  return stream.str();
}

TEST(Format, WritesFifteenSignificantDigits) {
  struct Case {
    double value;
    const char* text;
  };
  const Case cases[] = {{5, "5"},
                        {-5, "-5"},
                        {0, "0"},
                        {-0.0, "-0"},
                        {0.1, "0.1"},
                        {1.0 / 3.0, "0.333333333333333"},
                        {2.0 / 3.0, "0.666666666666667"},
                        {0.0001, "0.0001"},
                        {0.00001, "1e-05"},
                        {999999999999999.0, "999999999999999"},
                        {999999999999999.5, "1e+15"},
                        {1e15, "1e+15"},
                        {-1e15, "-1e+15"},
                        {1234567890123456.0, "1.23456789012346e+15"},
                        {123456789012345.6, "123456789012346"},
                        {1e100, "1e+100"},
                        {5e-324, "4.94065645841247e-324"},
                        {-2.2250738585072014e-308, "-2.2250738585072e-308"},
                        {std::numeric_limits<double>::infinity(), "inf"},
                        {-std::numeric_limits<double>::infinity(), "-inf"}};
  for (const Case& c : cases) {
    EXPECT_EQ(Format(c.value, false, nullptr), c.text);
    EXPECT_EQ(ReplaceSep(c.value, nullptr), c.text);
  }
}

TEST(Format, AgreesWithAStreamOnDoublesOfEveryKind) {
  std::mt19937_64 random(20261);
  for (int i = 0; i < 60000; ++i) {
    auto bits = std::bit_cast<double>(random());  // infinities of both signs and NaNs among them
    if (std::isnan(bits)) bits = std::abs(bits);  // some systems' streams leave out the sign
    const double ratio = static_cast<double>(random() % 100000) / static_cast<double>(random() % 100000 + 1);
    const double whole =
        std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 12) - 10);
    for (const double value : {bits, ratio, -ratio, whole, -whole, std::floor(whole)}) {
      ASSERT_EQ(NumberText(value).view(), classic(value)) << std::bit_cast<std::uint64_t>(value);
    }
  }
}

TEST(Format, AgreesWithAStreamAroundPowersOfTen) {
  for (int exponent = -20; exponent <= 22; ++exponent) {
    const double power = std::pow(10.0, exponent);
    for (const double value : {power, std::nextafter(power, 0.0), std::nextafter(power, 1e300), power / 2,
                               power * 9.5, power - 0.5, power + 0.5, power - 1, power + 1}) {
      EXPECT_EQ(NumberText(value).view(), classic(value));
      EXPECT_EQ(NumberText(-value).view(), classic(-value));
    }
  }
}

TEST(NumberText, WritesIntegersAsTheirDoublesAreWritten) {
  std::mt19937_64 random(20262);
  constexpr long long kBorder = 1'000'000'000'000'000;
  for (const long long value :
       {0LL, 1LL, -1LL, 10LL, static_cast<long long>(INT_MAX), static_cast<long long>(INT_MIN),
        static_cast<long long>(UINT_MAX), kBorder - 1, kBorder, kBorder + 1, 1 - kBorder, -kBorder,
        -kBorder - 1, (1LL << 53) + 1, LLONG_MAX, LLONG_MIN}) {
    EXPECT_EQ(NumberText(value).view(), classic(static_cast<double>(value))) << value;
  }
  for (int i = 0; i < 60000; ++i) {
    const auto value = static_cast<long long>(random()) >> (random() % 64);
    ASSERT_EQ(NumberText(value).view(), classic(static_cast<double>(value))) << value;
  }
}

TEST(Format, WritesALongThroughTheDefaultFormat) {
  EXPECT_EQ(Format(42L), "42");
  EXPECT_EQ(Format(-2147483647L - 1), "-2147483648");
  if constexpr (sizeof(long) > 4) {
    EXPECT_EQ(Format(static_cast<long>(1234567890123456LL)), "1.23456789012346e+15");
  }
}

TEST(Format, UsesAFormatOnlyWhenAskedTo) {
  EXPECT_EQ(Format(0.5, false, "%.3f"), "0.5");
  EXPECT_EQ(Format(0.5, true, "%.3f"), "0.500");
  EXPECT_EQ(Format(0.5, true, nullptr), "0.5");
  EXPECT_EQ(Format(0.5, true, "100%% of %+08.2e!"), "100% of +5.00e-01!");
  EXPECT_EQ(Format(0.5, true, "no number"), "no number");
  EXPECT_EQ(Format(0.5, true, ""), "");
}

TEST(Format, GrowsWithLongResults) {
  EXPECT_EQ(Format(2, true, "%5000.0f"), std::string(4999, ' ') + "2");
  const std::string literal(20000, 'x');
  EXPECT_EQ(Format(2, true, (literal + "%g").c_str()), literal + "2");
  for (int width = 60; width < 70; ++width) {  // around the first buffer's size
    const std::string format = "%" + std::to_string(width) + ".0f";
    EXPECT_EQ(Format(2, true, format.c_str()), std::string(static_cast<std::size_t>(width) - 1, ' ') + "2");
  }
  EXPECT_EQ(Format(std::numeric_limits<double>::max(), true, "%.0f").size(), 309U);
}

TEST(Format, FallsBackOnTheDefaultForAFormatThatAsksForMore) {
  for (const char* format : {"%s", "%n", "%d", "%g %g", "%*g", "%.*g", "%Lg", "%lg", "%1$g", "%", "%%%", "%.",
                             "%g%", "%9999999g", "%.9999999g", "%99999999999999999999f", "%c", "%p"}) {
    EXPECT_EQ(Format(0.25, true, format), "0.25") << format;
  }
}

TEST(Locale, GivesTheSeparatorsAndTheDefaultFormat) {
  EXPECT_EQ(GetDecimalCharacter(), std::localeconv()->decimal_point);
  EXPECT_EQ(GetListSeparator(), ";");
  EXPECT_EQ(GetDefaultNumericFormat(), "%.15g");
}

}  // namespace
}  // namespace KorAssocXML
