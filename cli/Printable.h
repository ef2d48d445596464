// Text from outside made fit for a terminal line.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korassoc::cli {

// The text with every character that would break or disguise a line escaped: control characters as \t, \n,
// \xHH; as \u{HHHH} line and paragraph separators, what turns the direction of the text, and what cannot be
// seen (zero-width spaces, marks inside a text, tags, soft hyphens, joiners where nothing joins); bytes that
// are not UTF-8 as \xHH. Everything else stays as it is.
std::string printable(std::string_view text);

// How many columns a printable text takes on a terminal: 0 for combining marks, 2 for wide (East Asian and
// emoji) characters, 1 for all else.
std::size_t displayWidth(std::string_view text);

// One character of UTF-8 text: its code point and how many bytes it takes. bytes is 0 where the text does not
// hold a valid character (a stray or missing continuation byte, an overlong form, a surrogate, beyond
// U+10FFFF), and at the end of the text.
struct CodePoint {
  char32_t value = 0;
  std::size_t bytes = 0;
};
CodePoint firstCodePoint(std::string_view text);

}  // namespace korassoc::cli
