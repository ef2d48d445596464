// The questions that a dictionary answers once its lattice is built: each is put to the class that knows.
// What is thrown on the way ends here where there is a status to say so, also for hosts that ask the lattice
// itself.

#include <vector>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "korassoc/rules/ConsequentQueries.h"
#include "korassoc/rules/FilteredRuleCreation.h"
#include "korassoc/rules/LatticeSearch.h"
#include "korassoc/rules/RuleCreation.h"

using KorAssoc::KorStatus;
using korassoc::detail::caughtStatus;
using korassoc::detail::LatticeSearch;
using korassoc::detail::SearchBounds;

namespace {

constexpr int kAnyCount = SetCounter::kMaxCount;
constexpr long long kAnyLength = kAnyCount;

void insertSets(const korassoc::detail::LatticeGraph& graph, const std::vector<int>& nodes,
                std::set<ItemSet>& out) {
  for (const int node : nodes) out.insert(out.end(), graph.set(node));  // nearly always in order
}

}  // namespace

KorStatus SetDictionary::createRules(double minSupport, double minConfidence,
                                     std::vector<AssociationRule>& out, ProgressListener* listener,
                                     bool pruneRedundant) {
  return caughtStatus([&] {
    const Use use(*this);
    return korassoc::detail::RuleCreation(*this, minSupport, minConfidence, listener, pruneRedundant)
        .run(out);
  });
}

KorStatus SetDictionary::createFilteredRules(double minConfidence, double maxConfidence, double minSupport,
                                             double maxSupport, double minLift, char sortBy,
                                             ItemSet* antecedentRequired, ItemSet* antecedentAllowed,
                                             int minAntecedentLength, int maxAntecedentLength,
                                             ItemSet* consequentRequired, ItemSet* consequentAllowed,
                                             int minConsequentLength, int maxConsequentLength, int maxRules,
                                             bool minimalAntecedentsOnly, std::vector<AssociationRule>& out,
                                             ProgressListener* listener) {
  const Use use(*this);
  const korassoc::detail::RuleFilter filter{minConfidence,
                                            maxConfidence,
                                            minSupport,
                                            maxSupport,
                                            minLift,
                                            sortBy,
                                            antecedentRequired,
                                            antecedentAllowed,
                                            minAntecedentLength,
                                            maxAntecedentLength,
                                            consequentRequired,
                                            consequentAllowed,
                                            minConsequentLength,
                                            maxConsequentLength,
                                            maxRules,
                                            minimalAntecedentsOnly};
  return caughtStatus(
      [&] { return korassoc::detail::FilteredRuleCreation(*this, filter, listener).run(out); });
}

KorStatus SetDictionary::createFilteredConsequents(double minConfidence, double maxConfidence,
                                                   double minSupport, double maxSupport, double minLift,
                                                   char sortBy, ItemSet* antecedentRequired,
                                                   ItemSet* antecedentAllowed, int minAntecedentLength,
                                                   int maxAntecedentLength, ItemSet* consequentAllowed,
                                                   int maxItems, std::vector<ConsequentDescriptor>& out,
                                                   ProgressListener* listener) {
  const Use use(*this);
  const korassoc::detail::RuleFilter filter{minConfidence,
                                            maxConfidence,
                                            minSupport,
                                            maxSupport,
                                            minLift,
                                            sortBy,
                                            antecedentRequired,
                                            antecedentAllowed,
                                            minAntecedentLength,
                                            maxAntecedentLength,
                                            nullptr,
                                            consequentAllowed,
                                            1,
                                            1,
                                            -1,
                                            false};
  return caughtStatus(
      [&] { return korassoc::detail::filteredConsequents(*this, filter, maxItems, out, listener); });
}

KorStatus SetDictionary::createConsequents(ItemSet* antecedent, int maxItems,
                                           std::vector<ConsequentDescriptor>& out) {
  return caughtStatus([&] { return korassoc::detail::consequents(*this, antecedent, maxItems, out); });
}

double SetDictionary::findSupport(const ItemSet& base, int k) {
  const Hold hold(*this);  // what is missing is said on a stream
  return LatticeSearch(graph()).support(base, k, getEmptySetCount());
}

KorStatus SetDictionary::superSets(const ItemSet& base, std::set<ItemSet>& out) {
  const SearchBounds bounds{-kAnyCount - 1, kAnyCount, base.length() + 1LL, kAnyLength};
  return caughtStatus([&] {
    insertSets(graph(), LatticeSearch(graph()).supersets(base, nullptr, bounds), out);
    return status_;
  });
}

KorStatus SetDictionary::findItemSets(const ItemSet& base, int minCount, int minLength, int maxLength,
                                      std::set<ItemSet>& out) {
  return findItemSets2(base, minCount, kAnyCount, minLength, maxLength, out);
}

SemiLattice* SetDictionary::filteredCopy(double minFraction) {
  return korassoc::detail::filteredCopy(*this, minFraction, nullptr);
}

SemiLattice* SetDictionary::filteredCopy(double minFraction, const ItemSet& leaveOut) {
  return korassoc::detail::filteredCopy(*this, minFraction, &leaveOut);
}

KorStatus SetDictionary::findItemSets3(const ItemSet& base, const ItemSet& allowed, int minCount,
                                       int maxCount, int minLength, int maxLength, std::set<ItemSet>& out) {
  const SearchBounds bounds{minCount, maxCount, minLength, maxLength};
  return caughtStatus([&] {
    insertSets(graph(), LatticeSearch(graph()).supersets(base, &allowed, bounds, &out), out);
    return status_;
  });
}

KorStatus SetDictionary::findItemSets2(const ItemSet& base, int minCount, int maxCount, int minLength,
                                       int maxLength, std::set<ItemSet>& out) {
  const SearchBounds bounds{minCount, maxCount, minLength, maxLength};
  return caughtStatus([&] {
    insertSets(graph(), LatticeSearch(graph()).supersets(base, nullptr, bounds, &out), out);
    return status_;
  });
}

KorStatus SetDictionary::findItemSetsWithin(const ItemSet& items, int minCount, int maxCount, int minLength,
                                            int maxLength, std::set<ItemSet>& out) {
  const SearchBounds bounds{minCount, maxCount, minLength, maxLength};
  return caughtStatus([&] {
    insertSets(graph(), LatticeSearch(graph()).containing(items, bounds, &out), out);
    return status_;
  });
}

KorStatus SetDictionary::findMaximalItemSets(int minCount, std::set<ItemSet>& out) {
  return caughtStatus([&] {
    insertSets(graph(), LatticeSearch(graph()).maximal(minCount), out);
    return status_;
  });
}
