// Which single items follow from given items, and how strongly.

#pragma once

#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/engine/ProgressListener.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "korassoc/rules/FilteredRuleCreation.h"

namespace korassoc::detail {

// Appends, of the filter's rules with a consequent of one item, the first of each item in the order asked
// for, up to maxItems of them. The filter's consequent bounds and maximum of rules are not looked at.
KorAssoc::KorStatus filteredConsequents(SetDictionary& dictionary, RuleFilter filter, int maxItems,
                                        std::vector<ConsequentDescriptor>& out, ProgressListener* listener);

// Appends, for every item outside the antecedent that follows from a stored subset of it, the figures of the
// most confident such rule; for a null antecedent every stored item with its support. Sorts out, the more
// confident first, and cuts it to maxItems (negative: no cut). Throws std::logic_error when the
// links lead to a subset of the antecedent that is not stored; any other set that is not counts 0.
KorAssoc::KorStatus consequents(SetDictionary& dictionary, const ItemSet* antecedent, int maxItems,
                                std::vector<ConsequentDescriptor>& out);

}  // namespace korassoc::detail
