// What a host sees of the counted itemsets once they are ordered into a lattice.

#pragma once

#include <iosfwd>
#include <set>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/itemsets/ItemSet.h"

class AssociationRule;
class ConsequentDescriptor;
class ProgressListener;

// The stored itemsets with their counts, ordered by inclusion. The order of the virtual operations is part of
// the binary interface: new ones are added at the end of the derived class.
//
// Supports and confidences are fractions from 0 to 1. No other number is refused:
//
//                             createRules, exportRulesXML,    the filtered operations
//                             filteredCopy
//   minimum  0 or less        no bound                        no bound
//            above 1          a support: a count like any     nothing
//                             other; a confidence: nothing
//            NaN              a support: no bound;            nothing
//                             a confidence: nothing
//   maximum  0 or less                                        nothing
//            1 or more                                        no bound
//            NaN                                              nothing
//
// Infinities count as any number of their sign. As a count, a support is rounded leniently: 1.05 of 10
// transactions asks for all 10.
//
// Errors: operations that answer a status let no exception out. Whatever is thrown on the way, by a listener
// or a stream too, is 40001, error; out may hold a part of the answer then. The others let std::bad_alloc out
// when memory runs out; findSupport() and filteredCopy() also a std::logic_error when a second pass was
// broken off, of which the first kind answers 40001, error. None of them changes a set or a count.
//
// Callbacks: a listener or a stream that is handed in may ask the lattice in turn. While it is written to a
//   stream it does not change, whoever asks for that (SetDictionary::Hold).
class KORASSOC_EXPORT SemiLattice {
 public:
  // Appends to out the rules X -> Z \ X of every stored set Z of at least minSupport (a fraction, rounded
  // leniently to a count) whose confidence is at least minConfidence; pruneRedundant leaves out rules with
  // more in the antecedent or less in the consequent than need be. Sorts out by confidence. listener may be
  // null. 40002, warning: the lattice is empty. 1, error: stopped by setRestartFailed(), or
  // the listener has had the lattice changed.
  virtual KorAssoc::KorStatus createRules(double minSupport, double minConfidence,
                                          std::vector<AssociationRule>& out, ProgressListener* listener,
                                          bool pruneRedundant) = 0;
  // Appends to out the rules within all bounds (inclusive), sorts it by confidence, support or lift ('C',
  // 'S', 'L') and cuts it to maxRules (negative: not). Null sets require nothing and allow everything.
  // Statuses as above.
  virtual KorAssoc::KorStatus createFilteredRules(
      double minConfidence, double maxConfidence, double minSupport, double maxSupport, double minLift,
      char sortBy, ItemSet* antecedentRequired, ItemSet* antecedentAllowed, int minAntecedentLength,
      int maxAntecedentLength, ItemSet* consequentRequired, ItemSet* consequentAllowed,
      int minConsequentLength, int maxConsequentLength, int maxRules, bool minimalAntecedentsOnly,
      std::vector<AssociationRule>& out, ProgressListener* listener) = 0;
  // Appends to out the consequents of one item of such rules, each item with the figures of its first rule.
  virtual KorAssoc::KorStatus createFilteredConsequents(double minConfidence, double maxConfidence,
                                                        double minSupport, double maxSupport, double minLift,
                                                        char sortBy, ItemSet* antecedentRequired,
                                                        ItemSet* antecedentAllowed, int minAntecedentLength,
                                                        int maxAntecedentLength, ItemSet* consequentAllowed,
                                                        int maxItems, std::vector<ConsequentDescriptor>& out,
                                                        ProgressListener* listener) = 0;
  // Appends to out the items that follow from stored subsets of the antecedent, sorts it by confidence and
  // cuts it to maxItems (negative: not). A null antecedent: every stored item with its support.
  virtual KorAssoc::KorStatus createConsequents(ItemSet* antecedent, int maxItems,
                                                std::vector<ConsequentDescriptor>& out) = 0;
  // The support (fraction) of the k-th most frequent among base and its stored supersets; -1.0 when there is
  // none.
  virtual double findSupport(const ItemSet& base, int k) = 0;
  // Inserts every stored proper superset of base.
  virtual KorAssoc::KorStatus superSets(const ItemSet& base, std::set<ItemSet>& out) = 0;
  // Inserts every stored superset of base, itself included, within the bounds: transactions, numbers of
  // items.
  virtual KorAssoc::KorStatus findItemSets(const ItemSet& base, int minCount, int minLength, int maxLength,
                                           std::set<ItemSet>& out) = 0;
  // The number of stored itemsets, the empty one included; those on disk count too.
  virtual int getTotalSetCount() const = 0;
  // How many levels from level 1 on hold sets, up to the first that is empty.
  virtual int getHighestLevel() const = 0;
  // The number of stored sets of this many items.
  virtual int getLevelSize(int level) const = 0;
  // The number of sets in memory of more than this many items.
  virtual int getSizeAboveLevel(int level) const = 0;
  // Writes every set and its count to standard output, level by level and bucket by bucket.
  virtual void display() const = 0;
  // Writes the rules that createRules() makes of the two thresholds, without the redundant ones when
  // nonRedundant is set, as a PMML document. When they cannot be made nothing is written and the answer tells
  // why. The stream's state is the caller's to look at. listener may be null.
  virtual KorAssoc::KorStatus exportRulesXML(std::ostream& out, double minSupport, double minConfidence,
                                             ProgressListener* listener, bool nonRedundant) = 0;
  // Writes every stored set with its figures as a lattice document. minSupport is a remark in it and selects
  // nothing. The stream's state is the caller's to look at.
  virtual KorAssoc::KorStatus exportLatticeXML(std::ostream& out, double minSupport) = 0;
  // A new lattice of the sets of at least minFraction of the transactions (a fraction, rounded leniently to a
  // count) that hold none of leaveOut. The caller owns the result.
  virtual SemiLattice* filteredCopy(double minFraction) = 0;
  virtual SemiLattice* filteredCopy(double minFraction, const ItemSet& leaveOut) = 0;
  // Asks a rule creation that is running to stop; every later one stops as well.
  virtual void setRestartFailed() = 0;
  virtual ~SemiLattice();
};
