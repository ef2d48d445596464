// Numbers of the command line: read whole or refused, never guessed at.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korassoc::cli {

// The finite decimal number that the text spells ("0.01", "1e-3"), without blanks, sign "+" or anything
// behind it. shift moves the decimal point: "33.3" with -2 is the double nearest to 0.333, which 33.3 / 100
// need not be.
std::optional<double> decimalNumber(std::string_view text, int shift = 0);

// The non-negative integer that the text spells in digits alone; nothing when it is more than 2147483647.
std::optional<int> wholeNumber(std::string_view text);

// A ratio from 0 to 1, written as a fraction ("0.5") or a percentage ("50%"). option is what messages call
// it ("--confidence"). Throws CliError (kUsage).
double parseRatio(const std::string& option, std::string_view text);

// A number of 0 or more ("1.5"), no percentage. Throws CliError (kUsage).
double parsePositive(const std::string& option, std::string_view text);

}  // namespace korassoc::cli
