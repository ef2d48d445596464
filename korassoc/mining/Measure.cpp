#include "korassoc/mining/Measure.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <string>

#include "korassoc/mining/Error.h"

namespace korassoc {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// All arithmetic is in double: products of two counts pass 2^64 on long streams.
struct Counts {
  explicit Counts(const RuleCounts& counts)
      : n(static_cast<double>(counts.transactions)),
        xy(static_cast<double>(counts.whole)),
        x(static_cast<double>(counts.antecedent)),
        y(static_cast<double>(counts.consequent)) {}

  double n, xy, x, y;
};

// a b - c d without the cancellation of two rounded products, up to 1.5 units in the last place.
// (W. Kahan, 2004: "On the cost of floating-point computation without extra-precise arithmetic".)
double differenceOfProducts(double a, double b, double c, double d) {
  const double product = c * d;
  const double error = std::fma(c, d, -product);
  return std::fma(a, b, -product) - error;
}

double confidence(const RuleCounts& counts) {
  const Counts c(counts);
  return c.xy / c.x;
}

double support(const RuleCounts& counts) {
  const Counts c(counts);
  return c.xy / c.n;
}

// In this order of operations, whose roundings results on record depend on.
double lift(const RuleCounts& counts) {
  const Counts c(counts);
  return c.xy / c.x / c.y * c.n;
}

double leverage(const RuleCounts& counts) {
  const Counts c(counts);
  return differenceOfProducts(c.n, c.xy, c.x, c.y) / c.n / c.n;
}

double conviction(const RuleCounts& counts) {
  const Counts c(counts);
  const double without = c.n - c.y;      // transactions without the consequent
  const double exceptions = c.x - c.xy;  // of these, those with the antecedent
  if (exceptions == 0 && without == 0) return kNaN;
  return c.x * without / (c.n * exceptions);
}

double zhang(const RuleCounts& counts) {
  const Counts c(counts);
  const double larger = std::max(c.xy * (c.n - c.x), c.x * (c.y - c.xy));
  const double value = differenceOfProducts(c.n, c.xy, c.x, c.y) / larger;  // 0 / 0 where the larger one is 0
  return std::clamp(value, -1.0, 1.0);                                      // the larger one is rounded
}

// A row is a measure; its place in the table is stored nowhere. The first six have names in the class.
constexpr MeasureInfo kTable[] = {
    {"confidence", "n_xy / n_x", 0, 1,
     "R. Agrawal, T. Imielinski, A. Swami: Mining association rules between sets of items in large "
     "databases. "
     "SIGMOD 1993",
     "", false, confidence},
    {"support", "n_xy / n", 0, 1,
     "R. Agrawal, T. Imielinski, A. Swami: Mining association rules between sets of items in large "
     "databases. "
     "SIGMOD 1993",
     "", false, support},
    {"lift", "n n_xy / (n_x n_y)", 0, kInfinity,
     "S. Brin, R. Motwani, J. Ullman, S. Tsur: Dynamic itemset counting and implication rules for market "
     "basket "
     "data. SIGMOD 1997 (as \"interest\")",
     "", true, lift},
    {"leverage", "n_xy / n - n_x n_y / n^2", -0.25, 0.25,
     "G. Piatetsky-Shapiro: Discovery, analysis, and presentation of strong rules. Knowledge Discovery in "
     "Databases, 1991",
     "", true, leverage},
    {"conviction", "n_x (n - n_y) / (n (n_x - n_xy))", 0, kInfinity,
     "S. Brin, R. Motwani, J. Ullman, S. Tsur: Dynamic itemset counting and implication rules for market "
     "basket "
     "data. SIGMOD 1997",
     "every transaction holds the consequent", true, conviction},
    {"zhang", "(n n_xy - n_x n_y) / max(n_xy (n - n_x), n_x (n_y - n_xy))", -1, 1,
     "T. Zhang: Association rules. PAKDD 2000", "every transaction holds the antecedent", true, zhang},
};
static_assert(std::size(kTable) <= std::numeric_limits<unsigned char>::max());

}  // namespace

const Measure Measure::kConfidence(0);
const Measure Measure::kSupport(1);
const Measure Measure::kLift(2);
const Measure Measure::kLeverage(3);
const Measure Measure::kConviction(4);
const Measure Measure::kZhang(5);
const double Measure::kUndefined = kNaN;

std::optional<Measure> Measure::find(std::string_view name) {
  const auto* row = std::find_if(std::begin(kTable), std::end(kTable),
                                 [name](const MeasureInfo& info) { return info.name == name; });
  if (row == std::end(kTable)) return std::nullopt;
  return Measure(static_cast<unsigned char>(row - std::begin(kTable)));
}

std::span<const MeasureInfo> Measure::table() { return kTable; }

Measure Measure::ofRow(std::size_t row) {
  if (row >= std::size(kTable)) {
    throw Error(Error::Kind::kInput, "there is no measure in row " + std::to_string(row) + " of " +
                                         std::to_string(std::size(kTable)));
  }
  return Measure(static_cast<unsigned char>(row));
}

const MeasureInfo& Measure::info() const { return kTable[row_]; }

}  // namespace korassoc
