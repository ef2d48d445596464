#include "cli/Ratio.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>

#include "cli/CliError.h"
#include "cli/Printable.h"

namespace korassoc::cli {
namespace {

[[noreturn]] void fail(const std::string& option, std::string_view text, std::string_view what) {
  throw CliError(ExitCode::kUsage, fmt::format("{} {}: {}", option,
                                               text.empty() ? std::string("\"\"") : printable(text), what));
}

}  // namespace

std::optional<double> decimalNumber(std::string_view text, int shift) {
  std::string_view digits = text;
  int exponent = 0;
  if (const std::size_t e = text.find_first_of("eE"); e != std::string_view::npos) {
    std::string_view power = text.substr(e + 1);
    if (!power.empty() && power[0] == '+') power.remove_prefix(1);
    const auto [end, error] = std::from_chars(power.data(), power.data() + power.size(), exponent);
    if (error != std::errc() || end != power.data() + power.size() || exponent < -9999 || exponent > 9999) {
      return std::nullopt;
    }
    digits = text.substr(0, e);
  }
  if (digits.empty() || digits.find_first_not_of("-.0123456789") != std::string_view::npos) {
    return std::nullopt;
  }
  // A stream and not from_chars, which some standard libraries lack for doubles.
  std::istringstream stream(fmt::format("{}e{}", digits, exponent + shift));
  stream.imbue(std::locale::classic());
  double value = 0;
  const bool whole = stream >> value && stream.peek() == std::istringstream::traits_type::eof();
  if (!whole || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<int> wholeNumber(std::string_view text) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

double parseRatio(const std::string& option, std::string_view text) {
  constexpr std::string_view kSpellings = "write a fraction from 0 to 1 (0.5) or a percentage (50%)";
  const bool percentage = !text.empty() && text.back() == '%';
  const auto value = percentage ? decimalNumber(text.substr(0, text.size() - 1), -2) : decimalNumber(text);
  if (!value) fail(option, text, fmt::format("is not a number; {}", kSpellings));
  if (*value < 0) fail(option, text, fmt::format("is below 0; {}", kSpellings));
  if (*value > 1 && percentage) fail(option, text, fmt::format("is above 100%; {}", kSpellings));
  if (*value > 1) fail(option, text, fmt::format("is above 1; {}", kSpellings));
  return *value;
}

double parsePositive(const std::string& option, std::string_view text) {
  const auto value = decimalNumber(text);
  if (!value) fail(option, text, "is not a number; write one of 0 or more, as in 1.5");
  if (*value < 0) fail(option, text, "is below 0; write a number of 0 or more, as in 1.5");
  return *value;
}

}  // namespace korassoc::cli
