// Why there are no rules.

#pragma once

#include <string>

#include "cli/Mining.h"
#include "cli/RuleQuery.h"

namespace korassoc::cli {

// For a query that gave no rules: the threshold that removed them, and what to try, in one line. Asks the
// engine once or twice more, with the thresholds out of the way one after the other.
std::string whyNoRules(Mining& mining, const RuleQuery& query);

}  // namespace korassoc::cli
