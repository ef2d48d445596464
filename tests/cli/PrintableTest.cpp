#include "cli/Printable.h"

#include <gtest/gtest.h>

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
                        {"\xE2\x82\xAC", 1}};             // the euro sign
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
