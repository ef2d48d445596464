// The documents that a dictionary writes of what it holds: each is put to the class that knows.

#include <vector>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/xml/export/LatticeDocument.h"
#include "korassoc/xml/export/RuleDocument.h"

using KorAssoc::KorStatus;
using korassoc::detail::caughtStatus;

// As of the queries, what is thrown ends here, by a stream or a listener too.
KorStatus SetDictionary::exportRulesXML(std::ostream& out, double minSupport, double minConfidence,
                                        ProgressListener* listener, bool nonRedundant) {
  return caughtStatus([&] {
    const Use use(*this);
    std::vector<AssociationRule> rules;
    const auto asked = heldGraph();
    const KorStatus status = createRules(minSupport, minConfidence, rules, listener, nonRedundant);
    if (status.GetCode() != 0) return status;
    // The document is made of the rules and of counts; the listener may have had these changed.
    if (!isCurrent(*asked) || !asked->hasCurrentCounts()) return KorStatus(1, false);
    const Hold hold(*this);
    korassoc::detail::RuleDocument(*this, rules, {minSupport, minConfidence, nonRedundant}).write(out);
    return status;
  });
}

KorStatus SetDictionary::exportLatticeXML(std::ostream& out, double minSupport) {
  return caughtStatus([&] {
    requireWhole();
    const Hold hold(*this);
    korassoc::detail::LatticeDocument(*this, minSupport).write(out);
    return status_;
  });
}
