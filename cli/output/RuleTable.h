// Rules as an aligned table.

#pragma once

#include <functional>
#include <span>

#include "cli/RuleBounds.h"
#include "cli/input/ItemNames.h"
#include "cli/output/ResultStream.h"
#include "korassoc/korassoc.h"

namespace korassoc::cli {

// Writes one row for each rule, in the order given, under a row of headings:
//
//   antecedent         consequent  count  support  confidence   lift
//   {bread, milk}  =>  {butter}        3  30.000%     75.000%  1.250
//
// count is the number of transactions with both sides, support its share of all transactions. Writes nothing,
// not even headings, when there are no rules.
void writeRuleTable(std::span<const AssociationRule> rules, const ItemNames& names, int transactions,
                    ResultStream& out);

// The same with bounds in place of the figures, which boundsOf gives for each rule:
//
//   antecedent         consequent  count >=  count <=  support >=  support <=  confidence >=  confidence <=
void writeBoundedRuleTable(std::span<const AssociationRule> rules,
                           const std::function<RuleBounds(const AssociationRule&)>& boundsOf,
                           const ItemNames& names, int transactions, ResultStream& out);

// As writeRuleTable, for single consequents of given items:
//
//   consequent  count  support  confidence   lift
//   butter          3  30.000%     75.000%  1.250
void writeConsequentTable(std::span<const ConsequentDescriptor> consequents, const ItemNames& names,
                          int transactions, ResultStream& out);

}  // namespace korassoc::cli
