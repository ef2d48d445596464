// A list of rules as a PMML 3.2 document with an AssociationModel.

#pragma once

#include <iosfwd>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/xml/export/DocumentParts.h"
#include "korassoc/xml/export/RuleItemsetIndex.h"

namespace korassoc::detail {

// What the rules were asked for with. Both thresholds are fractions and are written as given.
struct RuleDocumentTerms {
  double minSupport;
  double minConfidence;
  bool nonRedundant;  // only the rules with minimal antecedents were asked for
};

// The document lists the items and the itemsets that the rules are made of, then the rules in list order.
//
// Ownership: refers to dictionary and rules, which must not change before the document is written.
// Memory: one rule's element at a time, and the index of the itemsets.
// Errors: those of allocation propagate. A failing stream is the caller's to notice.
class RuleDocument {
 public:
  RuleDocument(SetDictionary& dictionary, const std::vector<AssociationRule>& rules,
               const RuleDocumentTerms& terms);

  void write(std::ostream& out) const;

 private:
  void addModel(KorAssocXML::XMLElement& root, const MiningAlgorithm& algorithm) const;
  Element item(int reference) const;
  Element itemset(int id) const;
  Element rule(const AssociationRule& rule) const;

  SetDictionary& dictionary_;
  const std::vector<AssociationRule>& rules_;
  RuleDocumentTerms terms_;
  RuleItemsetIndex index_;
  double transactions_;
};

}  // namespace korassoc::detail
