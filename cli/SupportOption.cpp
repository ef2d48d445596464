#include "cli/SupportOption.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "cli/CliError.h"
#include "cli/Printable.h"
#include "cli/Ratio.h"
#include "korassoc/korassoc.h"

namespace korassoc::cli {
namespace {

// Fewer than one of any 1,000,000,000 transactions. Whoever wants what one transaction holds writes 1n.
constexpr double kLeastFraction = 1e-9;
constexpr double kRoundingEpsilons = 100.0;  // the engine's own tolerance for products that are integers

[[noreturn]] void fail(const std::string& option, std::string_view text, std::string_view what) {
  throw CliError(
      ExitCode::kUsage,
      fmt::format("{} {}: {}; write a fraction (0.01), a percentage (1%) or a number of transactions (25n)",
                  option, text.empty() ? std::string("\"\"") : printable(text), what));
}

// x, or the integer that it is up to rounding.
double withoutRounding(double x) {
  const double nearest = std::floor(x + 0.5);
  return KorAssocMath::KorPower::AlmostEqual(x, nearest, kRoundingEpsilons) ? nearest : x;
}

}  // namespace

SupportOption SupportOption::parse(const std::string& option, std::string_view text) {
  SupportOption support;
  support.text_ = std::string(text);
  const char unit = text.empty() ? '\0' : text.back();
  const std::string_view number = unit == '%' || unit == 'n' ? text.substr(0, text.size() - 1) : text;
  if (unit == 'n' && text != "nan") {
    const auto count = wholeNumber(number);
    if (!count) fail(option, text, "is not a whole number of transactions");
    if (*count == 0) fail(option, text, "is 0, which asks for nothing");
    support.isCount_ = true;
    support.count_ = *count;
    return support;
  }
  const auto value = decimalNumber(number, unit == '%' ? -2 : 0);
  if (!value) fail(option, text, "is not a number");
  if (*value < 0) fail(option, text, "is below 0");
  if (*value > 1) fail(option, text, unit == '%' ? "is above 100%" : "is above 1");
  if (*value == 0) fail(option, text, "is 0, which asks for nothing");
  if (*value < kLeastFraction) fail(option, text, "is below 1e-9, which is hardly meant");
  support.fraction_ = *value;
  return support;
}

double SupportOption::exactBound(int transactions) const {
  return isCount_ ? count_ : withoutRounding(transactions * fraction_);
}

double SupportOption::fractionOf(int transactions) const {
  return isCount_ ? static_cast<double>(count_) / transactions : fraction_;
}

int SupportOption::leastCount(int transactions) const {
  return std::max(1, static_cast<int>(std::ceil(exactBound(transactions))));
}

int SupportOption::largestCount(int transactions) const {
  return static_cast<int>(std::floor(exactBound(transactions)));
}

}  // namespace korassoc::cli
