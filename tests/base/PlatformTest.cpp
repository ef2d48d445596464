// The way from the program's narrow characters, and from UTF-16, to UTF-8.

#include "korassoc/base/Platform.h"

#include <gtest/gtest.h>

#include <string>

namespace korassoc::detail {
namespace {

TEST(Utf8FromUtf16, TakesOneToFourBytesByTheSizeOfTheCode) {
  struct Case {
    std::u16string text;
    const char* utf8;
  };
  const Case cases[] = {{u"", ""},
                        {u"A\x7F", "A\x7F"},
                        {u"\u0080", "\xC2\x80"},
                        {u"\u00E9", "\xC3\xA9"},
                        {u"\u07FF", "\xDF\xBF"},
                        {u"\u0800", "\xE0\xA0\x80"},
                        {u"\u20AC", "\xE2\x82\xAC"},
                        {u"\uFFFF", "\xEF\xBF\xBF"},
                        {u"\U00010000", "\xF0\x90\x80\x80"},
                        {u"\U0001F600", "\xF0\x9F\x98\x80"},
                        {u"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
                        {u"a\u00E9\u20AC\U0001F600z", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z"}};
  for (const Case& c : cases) EXPECT_EQ(utf8FromUtf16(c.text), c.utf8) << c.utf8;
}

TEST(Utf8FromUtf16, EncodesALoneSurrogateInThreeBytes) {
  const char16_t high = 0xD83D;
  const char16_t low = 0xDE00;
  EXPECT_EQ(utf8FromUtf16(std::u16string{high}), "\xED\xA0\xBD");
  EXPECT_EQ(utf8FromUtf16(std::u16string{low, high}), "\xED\xB8\x80\xED\xA0\xBD");
  EXPECT_EQ(utf8FromUtf16(std::u16string{high, u'a'}),
            "\xED\xA0\xBD"
            "a");
  EXPECT_EQ(utf8FromUtf16(std::u16string{high, high, low}), "\xED\xA0\xBD\xF0\x9F\x98\x80");
}

TEST(Utf8FromNarrow, LeavesAsciiAlone) {
  EXPECT_EQ(utf8FromNarrow(""), "");
  EXPECT_EQ(utf8FromNarrow("plain <text>"), "plain <text>");
}

#if !defined(_WIN32)
TEST(Utf8FromNarrow, CopiesByteForByteWhatIsUtf8AlreadyAndWhatIsNot) {
  EXPECT_EQ(utf8FromNarrow("caf\xC3\xA9 \xE2\x82\xAC"), "caf\xC3\xA9 \xE2\x82\xAC");
  EXPECT_EQ(utf8FromNarrow("caf\xE9\xFF"), "caf\xE9\xFF");
  EXPECT_EQ(utf8FromNarrow(std::string("a\0b", 3)), std::string("a\0b", 3));
}
#endif

}  // namespace
}  // namespace korassoc::detail
