// Which rules are asked for, and in what order.

#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <stop_token>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/Measure.h"
#include "korassoc/mining/Support.h"

namespace korassoc {

// What may stand on one side of a rule. Items in any order; repeats make no difference.
struct SideFilter {
  // Each of these stands there.
  std::vector<Item> required = {};
  // Nothing but these and the required ones stands there. None: all items may.
  std::optional<std::vector<Item>> allowed = {};
  // None of these stands there, whatever is allowed.
  std::vector<Item> excluded = {};
  // Items. 0 lets the antecedent be empty; a consequent has at least one.
  std::size_t minLength = 1;
  std::size_t maxLength = std::numeric_limits<std::size_t>::max();
};

// Between which values a measure has to be, both included. A rule for which it is not defined is not given.
struct MeasureBounds {
  Measure measure;
  double least = -std::numeric_limits<double>::infinity();
  double most = std::numeric_limits<double>::infinity();
};

// Which of the rules of an itemset Z, antecedent X => the rest of Z, are given.
enum class RuleSelection {
  kAll,
  // Those none of whose items can leave the antecedent for the consequent, and that no larger itemset of the
  // query has with the same antecedent and a larger consequent. What the antecedent lengths and filters rule
  // out counts as not there.
  kMinimal,
  // The same among all rules of the support and the confidence, the empty antecedent included; of these, the
  // ones within the other bounds and filters. (Y. Bastide, N. Pasquier, R. Taouil, G. Stumme, L. Lakhal:
  // Mining minimal non-redundant association rules using frequent closed itemsets. CL 2000)
  kNonRedundant,
};

// A question for rules. Every field has a value, so that it need not be named. Every bound is inclusive.
// Supports are compared as counts, confidences as the quotients that Measure gives, so 2 of 3 reach a
// confidence of 2.0 / 3.
//
//   model.rules({.minConfidence = 0.5, .orderBy = Measure::kLift, .top = 20})
struct RuleQuery {
  std::optional<Support> minSupport = {};  // of both sides together; none: whatever the model counts
  std::optional<Support> maxSupport = {};
  double minConfidence = 0;
  double maxConfidence = 1;
  std::vector<MeasureBounds> bounds = {};  // on any further measure

  // With a list of allowed items, an itemset that holds none of them gives no rules, not even one with an
  // empty antecedent, unless a required item or the consequent's own list says where to look.
  SideFilter antecedent = {};
  SideFilter consequent = {};

  RuleSelection selection = RuleSelection::kAll;

  // By which measure the best comes first: see RuleOrder. None: in the order of discovery, which is that of
  // the itemsets and is the same every time; the fastest.
  std::optional<Measure> orderBy = Measure::kConfidence;
  // No more than the first so many. A run keeps no more of them in memory either, however many there are.
  std::optional<std::size_t> top = {};

  std::stop_token stop = {};  // ends the search with Error (kCancelled)
};

// Throws Error (kInput) for a question that cannot be meant: a confidence outside [0, 1] or a least one above
// the largest, lengths likewise, an empty consequent, a NaN as a bound, an item that is required and excluded
// or required on both sides.
KORASSOC_EXPORT void checkRuleQuery(const RuleQuery& query);

}  // namespace korassoc
