#include "cli/LengthRange.h"

#include <fmt/format.h>

#include "cli/CliError.h"
#include "cli/Printable.h"
#include "cli/Ratio.h"

namespace korassoc::cli {

LengthRange LengthRange::parse(const std::string& option, std::string_view text, int least) {
  const auto fail = [&](const std::string& what) {
    throw CliError(
        ExitCode::kUsage,
        fmt::format("{} {}: {}; write the least and the largest number of items, as in 1:3, 2: or 2", option,
                    text.empty() ? std::string("\"\"") : printable(text), what));
  };
  const auto bound = [&](std::string_view digits, int otherwise) {
    if (digits.empty()) return otherwise;
    const auto value = wholeNumber(digits);
    if (!value) fail("is not a range of lengths");
    return *value;
  };
  LengthRange range;
  const std::size_t colon = text.find(':');
  if (text.empty() || text == ":") fail("names no length");
  if (colon == std::string_view::npos) {
    range.shortest = range.longest = bound(text, 0);
  } else {
    range.shortest = bound(text.substr(0, colon), least);
    range.longest = bound(text.substr(colon + 1), range.longest);
  }
  if (range.shortest < least) fail(fmt::format("this side has at least {} item", least));
  if (range.longest < range.shortest) fail("the largest is below the least");
  return range;
}

}  // namespace korassoc::cli
