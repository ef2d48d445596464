#include "cli/Printable.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace korassoc::cli {
namespace {

TEST(Printable, EscapesOnlyWhatBreaksOrDisguisesALine) {
  struct Case {
    std::string_view text;
    const char* shown;
  };
  const Case cases[] = {{"plain text", "plain text"},
                        {"", ""},
                        {"a\tb", "a\\tb"},
                        {"a\nb\r", "a\\nb\\r"},
                        {std::string_view("\0", 1), "\\x00"},
                        {"\x1B[2J", "\\x1B[2J"},
                        {"\x7F", "\\x7F"},
                        {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
                        {"\xC2\x85", "\\u{0085}"},
                        {"\xE2\x80\xAE"
                         "evil",
                         "\\u{202E}evil"},
                        {"caf\xE9", "caf\\xE9"},
                        {"\xE2\x82", "\\xE2\\x82"}};
  for (const Case& c : cases) EXPECT_EQ(printable(c.text), c.shown);
}

// Encodes one character.
std::string utf8(char32_t c) {
  const auto tail = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
  if (c < 0x80) return {static_cast<char>(c)};
  if (c < 0x800) return {static_cast<char>(0xC0 | (c >> 6)), tail(c)};
  if (c < 0x10000) return {static_cast<char>(0xE0 | (c >> 12)), tail(c >> 6), tail(c)};
  return {static_cast<char>(0xF0 | (c >> 18)), tail(c >> 12), tail(c >> 6), tail(c)};
}

TEST(Printable, ShowsWhatCannotBeSeen) {
  struct Range {
    char32_t first, last;
  };
  const Range hidden[] = {{0x80, 0x9F},     {0xAD, 0xAD},       {0x061C, 0x061C},  {0x200B, 0x200F},
                          {0x2028, 0x202E}, {0x2060, 0x2064},   {0x2066, 0x2069},  {0xFE00, 0xFE0F},
                          {0xFEFF, 0xFEFF}, {0xE0000, 0xE007F}, {0xE0100, 0xE01EF}};
  for (const Range& range : hidden) {
    for (char32_t c = range.first; c <= range.last; ++c) {
      char digits[16];
      std::snprintf(digits, sizeof digits, "\\u{%04X}", static_cast<unsigned>(c));
      ASSERT_EQ(printable("mi" + utf8(c) + "lk"), "mi" + std::string(digits) + "lk");
      ASSERT_EQ(printable(utf8(c)), digits);
    }
  }
}

TEST(Printable, KeepsJoinersAndSelectorsWhereTheyShapeText) {
  const std::string kept[] = {
      utf8(0x06CC) + utf8(0x200C) + utf8(0x062E),                  // Persian
      utf8(0x0915) + utf8(0x094D) + utf8(0x200D) + utf8(0x0937),   // Devanagari
      utf8(0x0D28) + utf8(0x0D4D) + utf8(0x200D) + " x",           // Malayalam, at the end of a word
      utf8(0x1F469) + utf8(0x200D) + utf8(0x1F33E),                // a farmer
      utf8(0x2764) + utf8(0xFE0F) + utf8(0x200D) + utf8(0x1F525),  // a burning heart
      "1" + utf8(0xFE0F) + utf8(0x20E3),
      utf8(0xA9) + utf8(0xFE0F),      // a keycap, a copyright sign
      utf8(0x845B) + utf8(0xE0100)};  // a name's form of an ideograph
  for (const std::string& text : kept) EXPECT_EQ(printable(text), text);
  EXPECT_EQ(printable(utf8(0x06CC) + utf8(0x200C) + utf8(0x200C)), utf8(0x06CC) + utf8(0x200C) + "\\u{200C}");
  EXPECT_EQ(printable(utf8(0x1F469) + utf8(0xFE0F) + utf8(0xFE0E)),
            utf8(0x1F469) + utf8(0xFE0F) + "\\u{FE0E}");
  EXPECT_EQ(printable("1" + utf8(0xFE0F)), "1\\u{FE0F}");
}

TEST(DisplayWidth, CountsColumns) {
  struct Case {
    std::string_view text;
    std::size_t width;
  };
  const Case cases[] = {{"", 0},
                        {"bread", 5},
                        {"gr\xC3\xBC\xC3\x9F", 4},        // two bytes, one column
                        {"e\xCC\x81", 1},                 // e and a combining accent
                        {"\xE7\x89\x9B\xE4\xB9\xB3", 4},  // two ideographs
                        {"\xF0\x9F\x8D\x9E", 2},          // an emoji
                        {"\xE2\x82\xAC", 1},              // the euro sign
                        {"\xE2\x9D\xA4\xEF\xB8\x8F", 1},  // a heart and a variation selector
                        {"\xE8\x91\x9B\xF3\xA0\x84\x80", 2}};
  for (const Case& c : cases) EXPECT_EQ(displayWidth(c.text), c.width) << c.text;
}

TEST(FirstCodePoint, TakesEveryLengthAndRefusesTheRest) {
  EXPECT_EQ(firstCodePoint("A").value, U'A');
  EXPECT_EQ(firstCodePoint("\xC3\xBC").value, U'\u00FC');
  EXPECT_EQ(firstCodePoint("\xE2\x82\xAC").value, U'\u20AC');
  EXPECT_EQ(firstCodePoint("\xF4\x8F\xBF\xBF").value, U'\U0010FFFF');
  for (const std::string_view bad : {"", "\x80", "\xC1\x81", "\xE0\x80\x80", "\xED\xBF\xBF",
                                     "\xF8\x88\x80\x80", "\xC3", "\xC3(", "\xE2\x82("}) {
    EXPECT_EQ(firstCodePoint(bad).bytes, 0U) << printable(bad);
  }
}

}  // namespace
}  // namespace korassoc::cli
