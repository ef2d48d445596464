#include "cli/input/TextPlace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/ExpectError.h"

namespace korassoc::cli {
namespace {

using ::testing::HasSubstr;

TEST(PlaceOf, CountsLinesAndCharactersFromOne) {
  struct Case {
    const char* what;
    std::string_view text;
    std::size_t position, line, column;
  };
  const Case cases[] = {{"the start", "ab\ncd", 0, 1, 1},
                        {"inside the first line", "ab\ncd", 1, 1, 2},
                        {"on the line end", "ab\ncd", 2, 1, 3},
                        {"the second line", "ab\ncd", 3, 2, 1},
                        {"behind the end", "ab\ncd", 5, 2, 3},
                        {"behind a two-byte character", "\xC3\xA4z", 2, 1, 2},
                        {"behind a four-byte character", "\xF0\x9F\x8D\x9Ez", 4, 1, 2},
                        {"an empty text", "", 0, 1, 1}};
  for (const Case& c : cases) {
    const TextPlace place = placeOf(c.text, c.position);
    EXPECT_EQ(place.line, c.line) << c.what;
    EXPECT_EQ(place.column, c.column) << c.what;
  }
}

TEST(FailAt, NamesFileLineAndColumn) {
  EXPECT_EQ(errorOf(ExitCode::kInput, [] { failAt("b.csv", "x\nyz", 3, "odd; try even"); }),
            "b.csv:2:2: odd; try even");
}

TEST(FindTextFault, AcceptsText) {
  const std::string_view texts[] = {"",
                                    "a",
                                    "plain ascii, long enough for words\n",
                                    "tab\tin it\n",
                                    "crlf\r\n",
                                    "last\r",
                                    "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x8D\x9E\n",
                                    "no-break\xC2\xA0space"};
  for (const auto text : texts) EXPECT_FALSE(findTextFault(text)) << text;
}

TEST(FindTextFault, FindsTheFirstByteThatIsNoText) {
  struct Case {
    const char* what;
    std::string text;
    std::size_t position;
    const char* said;
  };
  const Case cases[] = {{"a NUL", std::string("abc\0d", 5), 3, "control character 0x00"},
                        {"an escape", "12345678\x1B[0m", 8, "control character 0x1B"},
                        {"a rubout in the middle of a word",
                         "abcd\x7F"
                         "efgh",
                         4, "control character 0x7F"},
                        {"a vertical tab behind a line end", "a\n\v", 2, "control character 0x0B"},
                        {"a C1 control", "a\xC2\x85", 1, "control character U+0085"},
                        {"a lone carriage return", "a\rb\n", 1, "carriage return"},
                        {"Latin-1", "caf\xE9,tea\n", 3, "byte 0xE9 is not UTF-8"},
                        {"a stray continuation byte", "12345678\x80", 8, "byte 0x80 is not UTF-8"},
                        {"a character cut short by the end", "ab\xE2\x82", 2, "byte 0xE2 is not UTF-8"},
                        {"an overlong slash", "\xC0\xAF", 0, "byte 0xC0 is not UTF-8"},
                        {"a surrogate", "x\xED\xA0\x80", 1, "byte 0xED is not UTF-8"},
                        {"beyond Unicode", "\xF4\x90\x80\x80", 0, "byte 0xF4 is not UTF-8"},
                        {"UTF-16",
                         "\xFF\xFE"
                         "b",
                         0, "UTF-16"},
                        {"gzip", "\x1F\x8B\x08", 0, "compressed"},
                        {"a spreadsheet", "PK\x03\x04zip", 0, "zip archive"}};
  for (const Case& c : cases) {
    const auto fault = findTextFault(c.text);
    ASSERT_TRUE(fault) << c.what;
    EXPECT_EQ(fault->position, c.position) << c.what;
    EXPECT_THAT(fault->what, HasSubstr(c.said)) << c.what;
  }
}

TEST(FindTextFault, FindsAFaultAtEveryOffset) {
  for (std::size_t at = 0; at < 40; ++at) {
    for (const char bad : {'\0', '\x1F', '\x7F', '\x80', '\xFF'}) {
      std::string text(40, 'x');
      text[at] = bad;
      const auto fault = findTextFault(text);
      ASSERT_TRUE(fault) << at;
      EXPECT_EQ(fault->position, at) << static_cast<int>(bad);
    }
  }
}

}  // namespace
}  // namespace korassoc::cli
