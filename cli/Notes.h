// What the tool says beside its results.

#pragma once

#include <fmt/format.h>

#include <string_view>

namespace korassoc::cli {

// Writes the text to standard error, which nothing else in the tool does. What cannot be written is dropped:
// a run whose messages nobody can read (2>&-, a full disk, a reader that left) is still worth its results.
void noteText(std::string_view text) noexcept;

// The same for a formatted text, which ends its own line.
void noteFormatted(fmt::string_view format, fmt::format_args arguments) noexcept;
template <typename... Arguments>
void note(fmt::format_string<Arguments...> format, const Arguments&... arguments) noexcept {
  noteFormatted(format, fmt::make_format_args(arguments...));
}

}  // namespace korassoc::cli
