// Places in a text and what is said about them.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace korassoc::cli {

// Counted from 1 as editors do: lines, and characters (code points; a tab is one) in the line.
struct TextPlace {
  std::size_t line = 1;
  std::size_t column = 1;
};

// The place of the byte at position (which may be text.size(): just behind the end).
TextPlace placeOf(std::string_view text, std::size_t position);

// Throws CliError (kInput) with "NAME:LINE:COLUMN: WHAT", where what ends in a hint at what to try.
[[noreturn]] void failAt(const std::string& name, std::string_view text, std::size_t position,
                         const std::string& what);

// The first byte that makes a content something else than UTF-8 text in lines, and what to say about it:
// a NUL or another control character (tab, line feed, and carriage return before a line feed are allowed), or
// a byte that is not UTF-8. Memory speed on plain ASCII.
struct TextFault {
  std::size_t position;
  std::string what;
};
std::optional<TextFault> findTextFault(std::string_view text);

}  // namespace korassoc::cli
