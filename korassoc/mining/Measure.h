// How good a rule is: the measures, all in one table.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "korassoc/base/Export.h"

namespace korassoc {

// What every measure of a rule X => Y is computed from: numbers of transactions. No smaller than 0; whole is
// at most antecedent and consequent, and these are at most transactions.
struct RuleCounts {
  std::int64_t transactions = 0;  // all of them: n
  std::int64_t whole = 0;         // those that hold X and Y: n_xy
  std::int64_t antecedent = 0;    // those that hold X: n_x
  std::int64_t consequent = 0;    // those that hold Y: n_y; 0: not known

  friend bool operator==(const RuleCounts&, const RuleCounts&) = default;
};

// A measure as the table describes it. The texts are for people and live as long as the program.
struct MeasureInfo {
  std::string_view name;       // identifier, and heading of a column: lower case
  std::string_view formula;    // in the letters of RuleCounts
  double least;                // of its range; may be minus infinity
  double most;                 // may be infinity
  std::string_view source;     // the paper that proposes it
  std::string_view undefined;  // when it has no value beside an unknown n_y; empty: never
  bool needsConsequent;        // whether n_y is in the formula
  double (*value)(const RuleCounts& counts);
};

// A Measure is a value: one row of the table. Those that the library itself speaks of have a name of their
// own here; all are found by the name in the table.
//
//   name         formula                                          range
//   confidence   n_xy / n_x                                       [0, 1]       of those with X, who has Y
//   support      n_xy / n                                         [0, 1]
//   lift         n n_xy / (n_x n_y)                               [0, inf)     1: independent
//   leverage     n_xy / n - n_x n_y / n^2                         [-1/4, 1/4]  0: independent
//   conviction   n_x (n - n_y) / (n (n_x - n_xy))                 [0, inf]     1: independent
//   zhang        (n n_xy - n_x n_y) /                             [-1, 1]      0: independent
//                max(n_xy (n - n_x), n_x (n_y - n_xy))
//
// A further measure is a further row in Measure.cpp; nothing else changes.
class KORASSOC_EXPORT Measure {
 public:
  static const Measure kConfidence;
  static const Measure kSupport;
  static const Measure kLift;
  static const Measure kLeverage;
  static const Measure kConviction;
  static const Measure kZhang;

  // The measure with this name in the table.
  static std::optional<Measure> find(std::string_view name);
  // The table.
  static std::span<const MeasureInfo> table();
  // Its row, counted from 0. Throws Error (kInput) beyond the table.
  static Measure ofRow(std::size_t row);

  const MeasureInfo& info() const;
  std::string_view name() const { return info().name; }

  // What the measure makes of a rule's counts. A NaN when it is not defined, also where it needs a consequent
  // that is not counted.
  double of(const RuleCounts& counts) const {
    const MeasureInfo& row = info();
    return row.needsConsequent && counts.consequent <= 0 ? kUndefined : row.value(counts);
  }

  friend bool operator==(const Measure&, const Measure&) = default;

 private:
  static const double kUndefined;
  constexpr explicit Measure(unsigned char row) : row_(row) {}

  unsigned char row_;
};

}  // namespace korassoc
