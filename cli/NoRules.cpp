#include "cli/NoRules.h"

#include <fmt/format.h>

#include <algorithm>

namespace korassoc::cli {
namespace {

bool hasUpperBounds(const RuleQuery& query) {
  return query.minLift > 0 || query.maxConfidence < 1 || query.maxCount < query.transactions;
}

// The same question without the least confidence, for its best rule alone.
RuleQuery withoutConfidence(RuleQuery query) {
  query.minConfidence = 0;
  query.order = RuleQuery::Order::kConfidence;
  query.top = 1;
  query.minimal = false;
  if (query.nonRedundant) {
    query.nonRedundant = false;
    query.lhs.length.shortest = std::max(query.lhs.length.shortest, 1);
  }
  // A smaller consequent is never less confident: the smallest ones hold the best rule. A bound on lift or
  // from above may refuse those and accept a larger one.
  if (!hasUpperBounds(query)) {
    const int needed = std::max({query.rhs.length.shortest, static_cast<int>(query.rhs.required.size()), 1});
    query.rhs.length.longest = std::min(query.rhs.length.longest, needed);
  }
  return query;
}

RuleQuery withSupportAndConfidenceAlone(const RuleQuery& query) {
  RuleQuery plain;
  plain.transactions = plain.maxCount = query.transactions;
  plain.minCount = query.minCount;
  plain.minConfidence = query.minConfidence;
  plain.rhs.length.longest = 1;
  plain.top = 1;
  return plain;
}

}  // namespace

std::string whyNoRules(Mining& mining, const RuleQuery& query) {
  const MiningFigures& figures = mining.figures();
  if (query.minCount > query.transactions) {
    return fmt::format("support: {} transactions are asked for, and there are {}; try a lower support",
                       query.minCount, query.transactions);
  }
  if (figures.longestSet < 2) {
    return fmt::format("support: no two items are together in {} of {} transactions; try a lower support",
                       query.minCount, query.transactions);
  }
  const std::vector<AssociationRule> best = mining.rules(withoutConfidence(query));
  if (!best.empty() && best.front().getConfidence() < query.minConfidence) {
    return fmt::format(
        "confidence: the best confidence seen is {:.6g}%, below {:.6g}%; try a lower confidence",
        best.front().getConfidence() * 100, query.minConfidence * 100);
  }
  if (mining.rules(withSupportAndConfidenceAlone(query)).empty()) {
    return "support and the other bounds together; try a lower support";
  }
  return "the filters and bounds: there are rules of that support and confidence, but none that they accept";
}

}  // namespace korassoc::cli
